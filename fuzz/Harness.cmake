# Harness.cmake: the libraries of test-only code, made once for whichever of the fuzz
# targets, the tests or the benchmarks asks for them first: tpx1testhooks (ways into the
# plug-in's state that the shipped plug-in leaves out) and tpx1harness, the
# plug-in-under-test harness (fuzz/Harness.cpp).
if(NOT TARGET tpx1testhooks)
  add_library(tpx1testhooks STATIC ${CMAKE_SOURCE_DIR}/fuzz/TestHooks.cpp)
  target_include_directories(tpx1testhooks PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(tpx1testhooks PUBLIC tpx1core)
endif()
if(NOT TARGET tpx1harness)
  add_library(tpx1harness STATIC ${CMAKE_SOURCE_DIR}/fuzz/Harness.cpp)
  target_include_directories(tpx1harness PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(tpx1harness PUBLIC tpx1testhooks tpx1core fmhostcore)
endif()
