#!/bin/sh
# test_install.sh: TPX1 as a user installs it. In a temporary folder of its own it
# configures and builds a tree without tests, benchmarks or fuzz targets, makes the Debian
# package, checks the package's files and Depends, stages the install with DESTDIR,
# installs into a prefix of its own, and moves the build tree out of reach. Then, from
# the installed files only: fmhost runs an example and vesk answers --version; no
# installed file names the build tree, and every search path is $ORIGIN-relative; fmhost
# without its resource file warns once and goes on; the interface XML matches what a
# running application exports; the C++ partner example builds through pkg-config, and
# fmhost talks to it, to the Python one and to the shell one, each launched by the
# plug-in on fmhost's private bus. The examples in docs/partners.md must be the files,
# verbatim.
# Usage: test_install.sh SOURCE-FOLDER CMAKE CPACK
set -eu
src=$(cd "$1" && pwd)
cmake=${2:-cmake}
cpack=${3:-cpack}
tmp=$(mktemp -d /tmp/tpx1-install-test.XXXXXX)
partners=""    # a partner that has not ended yet
cleanup() {
    for pid in $partners; do kill "$pid" 2>/dev/null || true; done
    rm -rf "$tmp"
}
trap cleanup EXIT INT TERM
fail() { echo "FAIL: $*" >&2; exit 1; }
step() { echo "== $*"; }
unset CFLAGS CXXFLAGS LDFLAGS DESTDIR

step "build a tree of its own (no tests, benchmarks or fuzz targets)"
build=$tmp/build
"$cmake" -S "$src" -B "$build" -DTPX1_BUILD_TESTS=OFF -DTPX1_BUILD_BENCH=OFF -DTPX1_FUZZ=OFF \
    -DTPX1_SANITIZE=OFF >"$tmp/build.log" 2>&1 &&
    "$cmake" --build "$build" -j2 >>"$tmp/build.log" 2>&1 || { tail -40 "$tmp/build.log"; fail "build"; }
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build/CMakeCache.txt")
pkglib=$libdir/tpx1

# Every file the package and the install hold, under the prefix; nothing more, nothing less.
expected() {
    cat <<EOF
bin/fmhost
bin/vesk
$pkglib/tpx1.fmx
$pkglib/tpx1.fmx.rsrc
$pkglib/libtpx1platform.so
$pkglib/libtpx1platform.so.1
$pkglib/libtpx1platform.so.1.0
$libdir/pkgconfig/tpx1platform.pc
include/tpx1/AppleEvents.h
include/tpx1/Files.h
include/tpx1/MacTypes.h
include/tpx1/Processes.h
share/dbus-1/interfaces/org.vesk.AppleEvent1.xml
share/doc/tpx1/README.md
share/doc/tpx1/examples/partner/Makefile
share/doc/tpx1/examples/partner/nimbo.cpp
share/doc/tpx1/examples/partner/nimbo.fmh
share/doc/tpx1/examples/partner/nimbo.py
share/doc/tpx1/examples/partner/nimbo.sh
share/doc/tpx1/examples/partner/try-nimbo.sh
EOF
    # ---- man pages and bash completions (docs/CMakeLists.txt, tools/completion/) ----
    cat <<EOF
share/man/man1/fmhost.1
share/man/man1/vesk.1
share/man/man7/tpx1.7
share/bash-completion/completions/fmhost
share/bash-completion/completions/vesk
EOF
    for doc in "$src"/docs/*.md; do echo "share/doc/tpx1/docs/${doc##*/}"; done
}
expected | sort >"$tmp/expected"
check_files() {  # $1: what, $2: the sorted list found
    diff "$tmp/expected" "$2" >"$tmp/diff" || { sed 's/^</missing:/; s/^>/unexpected:/' "$tmp/diff"; fail "$1 holds the wrong files"; }
}

step "package"
(cd "$build" && "$cpack" -G DEB >"$tmp/cpack.log" 2>&1) || { cat "$tmp/cpack.log"; fail "cpack -G DEB"; }
deb=$build/tpx1_${version}_$(dpkg --print-architecture).deb
[ -f "$deb" ] || fail "no $deb"
dpkg-deb -c "$deb" | awk '$1 !~ /^d/ { print $6 }' | sed 's|^\./usr/||' | sort >"$tmp/in-package"
check_files "the package" "$tmp/in-package"
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
for lib in libc6 libedit2 libsystemd0 libstdc++6; do
    case " $depends," in *" $lib "*) ;; *) fail "Depends lacks $lib: dpkg-shlibdeps did not see every binary" ;; esac
done
dpkg-deb -x "$deb" "$tmp/unpacked"

step "stage the install with DESTDIR, install into a prefix, move the build tree away"
root=$tmp/root
DESTDIR=$root "$cmake" --install "$build" --prefix /usr >"$tmp/install.log" 2>&1 || { cat "$tmp/install.log"; fail "install"; }
(cd "$root/usr" && find . ! -type d | sed 's|^\./||' | sort) >"$tmp/staged"
check_files "the staged install" "$tmp/staged"
"$cmake" --install "$build" --prefix "$tmp/prefix" >"$tmp/install.log" 2>&1 || { cat "$tmp/install.log"; fail "install --prefix"; }
[ "$(PKG_CONFIG_LIBDIR="$tmp/prefix/$libdir/pkgconfig" pkg-config --variable=prefix tpx1platform)" = "$tmp/prefix" ] ||
    fail "tpx1platform.pc does not name the prefix given to cmake --install"
mv "$build" "$tmp/build-away"
bin=$root/usr/bin

step "no installed file names the build tree; search paths are \$ORIGIN-relative"
for tree in "$root" "$tmp/unpacked" "$tmp/prefix"; do
    ! grep -rlF "$build" "$tree" || fail "files above name the build tree $build"
    find "$tree" -type f | while read -r file; do
        readelf -h "$file" >/dev/null 2>&1 || continue
        readelf -d "$file" | sed -n 's/.*(\(RUNPATH\|RPATH\)).*\[\(.*\)\]/\1 \2/p' | while read -r kind path; do
            [ "$kind" = RUNPATH ] || echo "$file: $kind $path"
            echo "$path" | tr ':' '\n' | grep -v '^\$ORIGIN' | sed "s|^|$file: search path |"
        done
    done >"$tmp/paths"
    [ ! -s "$tmp/paths" ] || { cat "$tmp/paths"; fail "search paths other than \$ORIGIN-relative RUNPATHs"; }
done
readelf -d "$root/usr/$pkglib/libtpx1platform.so.1.0" | grep -q 'SONAME.*\[libtpx1platform\.so\.1\]' ||
    fail "libtpx1platform has no versioned SONAME"

step "run the staged fmhost and vesk"
mkdir "$tmp/app"
export TPX1_APP_PATH="$tmp/app/FileMaker Pro" TPX1_DIALOG_LOG="$tmp/dialogs.log"
env -u DBUS_SESSION_BUS_ADDRESS "$bin/fmhost" "$src/examples/demo.fmh" >"$tmp/demo.out" 2>&1 ||
    { cat "$tmp/demo.out"; fail "the staged fmhost on examples/demo.fmh"; }
grep -q "^Plug-in: TOPOLUX plugin ver $version" "$tmp/demo.out" || { cat "$tmp/demo.out"; fail "demo.fmh output"; }
[ "$("$bin/vesk" --version)" = "vesk $version" ] || fail "vesk --version"
[ "$(env -u DBUS_SESSION_BUS_ADDRESS "$tmp/prefix/bin/fmhost" -e 'TPX1Version()' 2>&1)" = "\"TOPOLUX plugin ver $version\"" ] ||
    fail "fmhost installed with --prefix"

step "fmhost without the resource file"
mv "$root/usr/$pkglib/tpx1.fmx.rsrc" "$tmp/rsrc"
env -u DBUS_SESSION_BUS_ADDRESS "$bin/fmhost" -e 'TPX1TabChar()' >"$tmp/norsrc.out" 2>"$tmp/norsrc.err" ||
    { cat "$tmp/norsrc.err"; fail "fmhost stops without tpx1.fmx.rsrc"; }
[ "$(cat "$tmp/norsrc.out")" = '"\t"' ] && [ "$(wc -l <"$tmp/norsrc.err")" -eq 1 ] &&
    grep -q "built-in resources" "$tmp/norsrc.err" || { cat "$tmp/norsrc.out" "$tmp/norsrc.err"; fail "no single warning"; }
mv "$tmp/rsrc" "$root/usr/$pkglib/tpx1.fmx.rsrc"

step "the interface XML against a running application"
dbus-run-session -- sh -c '
    "$1/vesk" listen --as XMLT >/dev/null 2>&1 & listener=$!
    for i in $(seq 100); do busctl --user status org.vesk.App.s584d4c54 >/dev/null 2>&1 && break; sleep 0.1; done
    busctl --user introspect --xml-interface org.vesk.App.s584d4c54 /org/vesk/App >"$2"
    status=$?; kill $listener; exit $status' sh "$bin" "$tmp/live.xml" 2>"$tmp/live.err" ||
    { cat "$tmp/live.err"; fail "introspecting vesk listen"; }
/usr/bin/python3 - "$root/usr/share/dbus-1/interfaces/org.vesk.AppleEvent1.xml" "$tmp/live.xml" <<'EOF' || fail "interface XML"
import sys, xml.etree.ElementTree as ET
def methods(path):
    node = ET.parse(path).getroot()
    interface = [i for i in node.iter("interface") if i.get("name") == "org.vesk.AppleEvent1"]
    return {m.get("name"): [(a.get("name"), a.get("type"), a.get("direction", "in")) for a in m.iter("arg")]
            for i in interface for m in i.iter("method")}
installed, live = methods(sys.argv[1]), methods(sys.argv[2])
if not installed or installed != live:
    sys.exit("installed %s\nlive      %s" % (installed, live))
EOF

step "the partner examples: docs/partners.md shows the files as they are"
/usr/bin/python3 - "$src/docs/partners.md" "$src/examples/partner" <<'EOF' || fail "docs/partners.md and examples/partner differ"
import sys
doc = open(sys.argv[1]).read()
for name, fence in (("nimbo.cpp", "cpp"), ("nimbo.py", "python"), ("nimbo.sh", "sh"), ("Makefile", "make")):
    text = open(sys.argv[2] + "/" + name).read()
    if "```%s\n%s```\n" % (fence, text) not in doc:
        sys.exit("docs/partners.md does not show examples/partner/%s verbatim" % name)
EOF

step "the C++ partner, built with pkg-config from the staged install"
mkdir "$tmp/partner"
PKG_CONFIG_LIBDIR="$root/usr/$libdir/pkgconfig" make -s -C "$tmp/partner" -f "$src/examples/partner/Makefile" \
    PKG_CONFIG="pkg-config --define-variable=prefix=$root/usr" || fail "building examples/partner"
ldd "$tmp/partner/nimbo" | grep -qF "libtpx1platform.so.1 => $root/usr/$pkglib/" || fail "the partner's library"

step "fmhost and NIMBO in C++, Python and shell"
for program in "$tmp/partner/nimbo" "$src/examples/partner/nimbo.py" "$src/examples/partner/nimbo.sh"; do
    log=$tmp/${program##*/}.log
    NIMBO_LOG=$log PATH="$bin:$PATH" FMHOST=$bin/fmhost "$src/examples/partner/try-nimbo.sh" "$program" \
        >"$log.fmhost" 2>&1 || { cat "$log.fmhost" "$log"; fail "fmhost and $program"; }
    pid=$(sed -n 's/.*running as pid \([0-9]*\)$/\1/p; s/^start NMB5 pid \([0-9]*\)$/\1/p' "$log")
    [ -n "$pid" ] || { cat "$log"; fail "$program did not start"; }
    partners=$pid
    for i in $(seq 100); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
    ! kill -0 "$pid" 2>/dev/null || fail "$program still runs after fmhost ended"
    partners=""
    grep -q "FileMaker got RSLT run-7 from NMB5" "$log.fmhost" || { cat "$log.fmhost"; fail "$program: no answer"; }
    case $program in
    *.sh) grep -q "MSSG=CALC" "$log" && grep -q "sent RSLT to FMP7" "$log" ;;
    *) grep -q "nimbo: CALC from FMP7" "$log" && grep -q "nimbo: BYE  from FMP7" "$log" && grep -q "nimbo: stopped" "$log" ;;
    esac || { cat "$log"; fail "$program's log"; }
done
echo "all good"
