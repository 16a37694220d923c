# Harness.cmake: the library of the plug-in-under-test harness (fuzz/Harness.cpp), made
# once for whichever of the fuzz targets, the sweeps or the replays asks for it first.
if(NOT TARGET tpx1harness)
  add_library(tpx1harness STATIC ${CMAKE_SOURCE_DIR}/fuzz/Harness.cpp)
  target_include_directories(tpx1harness PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(tpx1harness PUBLIC tpx1core fmhostcore)
endif()
