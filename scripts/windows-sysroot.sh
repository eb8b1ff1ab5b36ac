#!/usr/bin/env bash
# Makes the sysroot of the Windows build: the framework, and what else the library stands on, compiled from Debian's
# source packages with the MinGW compiler. Writes the sysroot's path as its last line.
#
# The sysroot stands outside the tree under a name that tells its inputs (this script and the versions of compiler and
# framework), so it is made once. VOCORE_WINDOWS_SYSROOT names a ready one instead. The machine's own lists of packages
# stay as they are: the list of sources is this script's own. Where the sources cannot be had it ends with 3.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

target=x86_64-w64-mingw32
sources=(qtbase-opensource-src zlib libdeflate libsodium libxml2 libzstd googletest)
# The DLLs of the compiler's runtime stand beside the programs like all others.
runtime=(libstdc++-6.dll libgcc_s_seh-1.dll)

if [ -n "${VOCORE_WINDOWS_SYSROOT:-}" ]; then
    [ -f "$VOCORE_WINDOWS_SYSROOT/complete" ] || fail "VOCORE_WINDOWS_SYSROOT ($VOCORE_WINDOWS_SYSROOT) is no whole sysroot"
    printf '%s\n' "$VOCORE_WINDOWS_SYSROOT"
    exit
fi

inputs() {
    cat "${BASH_SOURCE[0]}"
    dpkg-query -W -f='${Package} ${Version}\n' g++-mingw-w64-x86-64-posix libz-mingw-w64-dev qtbase5-dev-tools
}
key=$(inputs | sha256sum | cut -c1-16)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/vocore-windows
sysroot=$cache/$key
if [ -f "$sysroot/complete" ]; then
    printf '%s\n' "$sysroot"
    exit
fi

mkdir -p "$cache"
exec 9>"$cache/lock"
flock 9 # two clones make it once
if [ -f "$sysroot/complete" ]; then
    printf '%s\n' "$sysroot"
    exit
fi
work=$cache/work-$key # what an interrupted run had made is taken
mkdir -p "$work/done" "$work/apt/lists/partial" "$work/apt/cache/archives/partial" "$sysroot"/{bin,include,lib/pkgconfig}
log=$work/log

cannot_fetch() { printf 'NOT BUILT: %s\n' "$*" >&2; exit 3; }

# step TEXT COMMAND: one line on the way; the output only when it fails. What is done is not done again.
step() {
    local status
    [ ! -f "$work/done/$2" ] || return 0
    say "sysroot: $1" >&2
    shift
    set +e # a function that is asked for its status would go on after an error
    (set -e; "$@") >>"$log" 2>&1
    status=$?
    set -e
    [ "$status" -ne 3 ] || cannot_fetch "the sources of the Windows libraries cannot be had (all of it in $log)"
    [ "$status" -eq 0 ] || { tail -n 40 "$log" >&2; fail "$* (all of it in $log)"; }
    touch "$work/done/$1"
}

fetch_sources() {
    local suite mirror
    suite=$(. /etc/os-release && printf '%s' "$VERSION_CODENAME")
    mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' "Codename: $suite" 'Component: main' | sed -n 1p)
    [ -n "$mirror" ] || cannot_fetch "apt-get knows no mirror of $suite"
    printf 'deb-src %s %s main\n' "$mirror" "$suite" >"$work/apt/sources.list"
    local own=(-o Dir::Etc::sourcelist="$work/apt/sources.list" -o Dir::Etc::sourceparts=- -o Dir::State::lists="$work/apt/lists"
        -o Dir::Cache="$work/apt/cache" -o APT::Sandbox::User=)
    apt-get "${own[@]}" -o APT::Update::Error-Mode=any update || return 3
    cd "$work"
    apt-get "${own[@]}" source --download-only "${sources[@]}" || return 3 # checks signatures and sums by apt's own lists
    local name
    for name in "${sources[@]}"; do
        dpkg-source --no-copy -x "$name"_*.dsc "$name"
    done
}

# Host tools are not compiled: Debian's, of the same version, serve. Without display: the second library is not built here.
configure_framework() {
    cd "$work/qtbase-opensource-src"
    sed -i 's/-lSecur32/-lsecur32/; s/-lCrypt32/-lcrypt32/' src/network/ssl/ssl.pri
    sed -i 's/(cd "$outpath\/qmake"; "$MAKE" -s) || exit 2/true/' configure
    mkdir -p "$work/framework"
    cd "$work/framework"
    ../qtbase-opensource-src/configure -opensource -confirm-license -xplatform win32-g++ \
        -device-option CROSS_COMPILE="$target-" -external-hostbindir /usr/lib/qt5/bin -release -shared -prefix "$sysroot" \
        -make libs -nomake tools -nomake examples -nomake tests -no-gui -no-widgets -no-dbus -no-icu -no-opengl \
        -no-openssl -schannel -qt-zlib -qt-pcre -no-pch -no-feature-sql -no-feature-testlib -no-feature-concurrent \
        -no-feature-statemachine -no-feature-animation -no-feature-ftp
}

# In this order, each by itself: the whole would make the host tools too.
build_framework() {
    local part
    cd "$work/framework"
    make qmake_all
    for part in 3rdparty/pcre2 corelib winmain network xml; do
        make -C "src/$part" -j "$vocore_jobs" release
        case $part in 3rdparty/*) ;; *) make -C "src/$part" install ;; esac
    done
    make install_mkspecs || true # for qmake, which nobody asks
    ln -sf /usr/lib/qt5/bin/{qmake,moc,rcc} "$sysroot/bin" # where the framework's CMake files look
}

build_minizip() {
    cd "$work/zlib/contrib/minizip"
    "$target-gcc-posix" -O2 -shared ioapi.c iowin32.c unzip.c zip.c mztools.c -lz \
        -Wl,--out-implib,"$sysroot/lib/libminizip.dll.a" -o "$sysroot/bin/libminizip.dll"
    mkdir -p "$sysroot/include/minizip"
    cp ./*.h "$sysroot/include/minizip"
    write_pc minizip 1.2.13 -lminizip minizip
}

# write_pc NAME VERSION LIBS [FOLDER]: for pkg-config; FOLDER is that of the headers, below include/.
write_pc() {
    printf 'prefix=${pcfiledir}/../..\nName: %s\nDescription: %s for Windows\nVersion: %s\nLibs: -L${prefix}/lib %s\nCflags: -I${prefix}/include/%s\n' \
        "$1" "$1" "$2" "$3" "${4:-}" >"$sysroot/lib/pkgconfig/$1.pc"
}

build_deflate() {
    cd "$work/libdeflate"
    "$target-gcc-posix" -O2 -shared -I. lib/*.c lib/x86/*.c -Wl,--out-implib,"$sysroot/lib/libdeflate.dll.a" \
        -o "$sysroot/bin/libdeflate.dll"
    cp libdeflate.h "$sysroot/include"
    write_pc libdeflate 1.14 -ldeflate
}

# Its own configuration needs tools that nothing else does. The portable code is taken, without that of newer processors.
build_sodium() {
    cd "$work/libsodium/src/libsodium"
    cp ../../builds/msvc/version.h include/sodium
    mkdir -p "$work/sodium"
    find . -name '*.c' -printf '%P\0' | xargs -0 -P "$vocore_jobs" -I{} sh -c \
        '"$0" -O2 -DCONFIGURED=1 -DSODIUM_DLL_EXPORT -DHAVE_TI_MODE=1 -DTLS=_Thread_local -Iinclude/sodium -c "$2" \
            -o "$1/$(echo "$2" | tr / _).o"' "$target-gcc-posix" "$work/sodium" {}
    "$target-gcc-posix" -shared "$work/sodium/"*.o -ladvapi32 -Wl,--out-implib,"$sysroot/lib/libsodium.dll.a" \
        -o "$sysroot/bin/libsodium.dll"
    cp -r include/sodium include/sodium.h "$sysroot/include"
    write_pc libsodium 1.0.18 -lsodium
}

# build_with_cmake SOURCE OPTIONS...
build_with_cmake() {
    cmake -S "$work/$1" -B "$work/$1-build" -G Ninja -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_COMPILER="$target-g++-posix" -DCMAKE_C_COMPILER="$target-gcc-posix" -DCMAKE_RC_COMPILER="$target-windres" \
        -DCMAKE_INSTALL_PREFIX="$sysroot" "${@:2}"
    cmake --build "$work/$1-build" --target install -j "$vocore_jobs"
}

# Documents and schemas come as files in encodings that it reads by itself.
build_xml() {
    build_with_cmake libxml2 -DLIBXML2_WITH_ICONV=OFF -DLIBXML2_WITH_LZMA=OFF -DLIBXML2_WITH_ZLIB=OFF \
        -DLIBXML2_WITH_PYTHON=OFF -DLIBXML2_WITH_PROGRAMS=OFF -DLIBXML2_WITH_TESTS=OFF -DLIBXML2_WITH_FTP=OFF -DLIBXML2_WITH_HTTP=OFF
}

build_zstd() {
    cd "$work/libzstd"
    "$target-gcc-posix" -O2 -shared -DZSTD_DLL_EXPORT=1 -DZSTD_DISABLE_ASM lib/{common,compress,decompress}/*.c \
        -Wl,--out-implib,"$sysroot/lib/libzstd.dll.a" -o "$sysroot/bin/libzstd.dll"
    cp lib/zstd.h lib/zstd_errors.h "$sysroot/include"
    write_pc libzstd 1.5.4 -lzstd
}

build_googletest() {
    build_with_cmake googletest
}

copy_runtime() {
    local name
    for name in "${runtime[@]}"; do
        cp "$("$target-g++-posix" -print-file-name="$name")" "$sysroot/bin"
    done
    cp "/usr/$target/lib/"{libwinpthread-1,zlib1}.dll "$sysroot/bin"
}

step "sources" fetch_sources
step "minizip" build_minizip
step "libdeflate" build_deflate
step "libsodium" build_sodium
step "libxml2" build_xml
step "libzstd" build_zstd
step "GoogleTest" build_googletest
step "framework, configuration" configure_framework
step "framework" build_framework
step "runtime" copy_runtime
rm -rf "$work"
touch "$sysroot/complete"
printf '%s\n' "$sysroot"
