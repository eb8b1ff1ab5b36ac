#!/usr/bin/env bash
# Windows from Debian: makes the sysroot (once), builds the preset "windows", runs all test programs under Wine, and
# drives the packed tool, unpacked under a fresh Wine: from disk, and over http and https against nginx.
# usage: scripts/windows.sh [sysroot|build|test [NAME...]|package|road]...   (all but "sysroot" imply the build; none: all)
#        scripts/windows.sh test Core FileSystem      the test programs VoCoreCoreTests and VoCoreFileSystemTests
# VOCORE_WINDOWS_SYSROOT names a ready sysroot. GTEST_FILTER chooses cases. Ends with 3 where the sources of the sysroot
# cannot be had, or Wine does not run: nothing was tested then.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
. "$vocore_root/scripts/server.sh"
cd "$vocore_root"

built=$vocore_root/build/windows
vocore_package_lists+=("$vocore_root/scripts/packages.windows")
install_missing_packages
VOCORE_WINDOWS_SYSROOT=$(scripts/windows-sysroot.sh)
VOCORE_WINDOWS_SYSROOT=${VOCORE_WINDOWS_SYSROOT##*$'\n'}
export VOCORE_WINDOWS_SYSROOT WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES="mscoree,mshtml=" DISPLAY=
export LC_ALL=C.UTF-8 # by which Wine reads names and the environment

# under_wine PREFIX PROGRAM ARGUMENTS...: with the first, Wine's own folder, apart from the user's.
under_wine() { HOME=$1/home WINEPREFIX=$1/wine wine "${@:2}"; } # nothing of it leads to the user's own folders
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

new_prefix() {
    rm -rf "$1"
    mkdir -p "$1/home"
    under_wine "$1" wineboot --init >/dev/null 2>&1 || { printf 'NOT TESTED: Wine cannot make its folder %s\n' "$1" >&2; exit 3; }
    WINEPREFIX=$1/wine wineserver --wait
}

# Makes an authority, in PEM, one of those that the system there trusts. Under Wine a program cannot bring its own: the
# list that it hands over (--ca-file) is not looked at.
trust_authority() {
    local der size i
    der=$(openssl x509 -in "$2" -outform DER | od -An -v -tx1 | tr -d ' \n')
    size=$((${#der} / 2))
    { # a property of the form that the registry keeps certificates in: the certificate itself (32)
        printf 'REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Microsoft\\SystemCertificates\\Root\\Certificates\\%s]\n' \
            "$(openssl x509 -in "$2" -noout -fingerprint -sha1 | sed 's/.*=//; s/://g')"
        printf '"Blob"=hex:20,00,00,00,01,00,00,00'
        for i in 0 8 16 24; do printf ',%02x' $((size >> i & 255)); done
        sed 's/../,&/g' <<<"$der"
    } >"$1/authority.reg"
    under_wine "$1" regedit "$(windows_path "$1/authority.reg")" >/dev/null 2>&1 || fail "Wine does not take the authority"
    WINEPREFIX=$1/wine wineserver --wait
}

# A program that crashes there may end with 0: what counts is that its report is there and tells of no failure.
passed() {
    local report=$1
    [ -s "$report" ] && grep -q '^<testsuites tests="[1-9][0-9]*" failures="0" disabled="[0-9]*" errors="0"' "$report" &&
        grep -q '</testsuites>' "$report"
}

# What measures times that this machine's emulation of another system does not keep; the Linux runs have them.
left_out() {
    case $1 in
    Download) printf '%s' '-*DownloadFaultsBehindHints.*' ;;
    *) printf '*' ;;
    esac
}

# Runs one test program. Prints a line, and what failed; its whole output stands beside its report.
run_test() {
    local name=$1 program report=$built/reports/$1.xml
    rm -f "$report"
    program=$(find "$built/tests" -name "VoCore${name}Tests.exe")
    [ -n "$program" ] || fail "no test program of the name $name"
    GTEST_FILTER=${GTEST_FILTER:-$(left_out "$name")} HOME=$built/wine/home WINEPREFIX=$built/wine/wine \
        timeout --kill-after=10 420 wine "$program" --gtest_output="xml:$(windows_path "$report")" \
        >"$built/reports/$name.log" 2>&1 || true
    if passed "$report"; then
        say "$name: $(sed -n 's/^<testsuites tests="\([0-9]*\)".*time="\([0-9.]*\)".*/\1 cases, \2 s/p' "$report")"
        return
    fi
    grep -a -E '^\[  FAILED  \]|FAILED TEST' "$built/reports/$name.log" | tail -n 60 >&2 ||
        tail -n 5 "$built/reports/$name.log" >&2
    say "$name: FAILED ($built/reports/$name.log)"
}

# The longest first, so that the last of them do not run alone.
test_names() {
    local longest=(Install Updater Threading Tools Trust Download) name
    find "$built/tests" -name 'VoCore*Tests.exe' -printf '%f\n' | sed 's/^VoCore//; s/Tests[.]exe$//' | sort >"$built/names"
    for name in "${longest[@]}"; do grep -x "$name" "$built/names" || true; done
    grep -v -x -F -f <(printf '%s\n' "${longest[@]}") "$built/names"
}

run_tests() {
    local names=("$@") name failed=()
    mkdir -p "$built/reports"
    [ "${#names[@]}" -gt 0 ] || mapfile -t names < <(test_names)
    [ -d "$built/wine" ] || new_prefix "$built/wine"
    export WINEPATH="$(windows_path "$VOCORE_WINDOWS_SYSROOT/bin");$(windows_path "$built")"
    say "${#names[@]} test programs under Wine"
    for name in "${names[@]}"; do
        while [ "$(jobs -rp | wc -l)" -ge "$vocore_jobs" ]; do wait -n || true; done
        run_test "$name" &
    done
    wait
    for name in "${names[@]}"; do
        passed "$built/reports/$name.xml" && continue
        say "$name once more, with the machine to itself: times are Wine's as well"
        mv "$built/reports/$name.log" "$built/reports/$name.first.log"
        run_test "$name"
        passed "$built/reports/$name.xml" || failed+=("$name")
    done
    [ "${#failed[@]}" -eq 0 ] || fail "under Wine: ${failed[*]}"
}

make_package() {
    say "packing"
    rm -rf "$built/package"
    cmake --build "$built" --target VoCore vo -j "$vocore_jobs" >/dev/null
    (cd "$built" && cpack -G ZIP -B "$built/package") >"$built/package.log" 2>&1 || { tail "$built/package.log" >&2; fail "cpack"; }
    package=$(find "$built/package" -maxdepth 1 -name '*.zip')
    say "$(basename "$package"): $(stat -c %s "$package") bytes"
}

# The packed tool where nothing else was installed, in a folder with a blank and letters beyond ASCII.
run_road() {
    local work=$built/road vo published
    unset WINEPATH
    [ -n "${package:-}" ] || make_package
    rm -rf "$work"
    new_prefix "$work/wine"
    published=$work/published
    mkdir -p "$work/two" "$work/one/dir" "$work/tool Größe"
    unzip -q "$package" -d "$work/tool Größe"
    vo=$(find "$work/tool Größe" -name vo.exe)
    export VOAPPDATAPATH="$(windows_path "$work/data Ä")\\"
    printf 'text\n' >"$work/one/dir/Grün & blank.txt"
    head -c 300000 /dev/urandom >"$work/one/dir/large.bin"
    cp -r "$work/one/." "$work/two"
    printf 'more' >>"$work/two/dir/large.bin"
    printf 'added' >"$work/two/added.txt"

    tool() { # CODE ARGUMENTS...
        local wanted=$1 code=0
        shift
        output=$(under_wine "$work/wine" "$vo" "$@" 2>&1) || code=$?
        [ "$code" -eq "$wanted" ] || { printf '%s\n' "$output" >&2; fail "vo $*: exit code $code, expected $wanted"; }
    }
    same() { diff -r "$1" "$work/app" >&2 || fail "the installed tree is not that of $1"; }
    local to; to=$(windows_path "$work/app")
    say "road: from disk"
    tool 0 publish "$(windows_path "$work/one")" --to "$(windows_path "$published/declarations.xml")" --name Road --release 1.0.0
    tool 0 publish "$(windows_path "$work/two")" --to "$(windows_path "$published/declarations.xml")" --name Road --release 1.1.0
    tool 0 install "$(windows_path "$published/declarations.xml")" --release 1.0.0 --to "$to"
    same "$work/one"
    chmod a-w "$work/app/dir/large.bin" # a file marked as read-only is replaced as any
    tool 0 install "$(windows_path "$published/declarations.xml")"
    same "$work/two"
    tool 0 verify Road
    tool 0 uninstall Road
    [ ! -e "$work/app/dir" ] || fail "files were left behind"

    say "road: http"
    start_server "$published" "$work/server"
    trap 'stop_server "$built/road/server"' EXIT
    tool 0 install "$http_url/declarations.xml" --release 1.0.0 --to "$to"
    same "$work/one"
    tool 0 update
    same "$work/two"
    tool 0 uninstall Road

    say "road: https"
    tool 1 install "$https_url/declarations.xml" --release 1.0.0 --to "$to" # from somebody
    [ ! -e "$work/app/dir" ] || fail "it was installed from a server that nobody vouches for"
    trust_authority "$work/wine" "$ca_file"
    tool 0 install "$https_url/declarations.xml" --release 1.0.0 --to "$to"
    same "$work/one"
    tool 0 update
    same "$work/two"
    stop_server "$work/server"
    trap - EXIT
}

[ "$#" -gt 0 ] || set -- build test package road
[ "$1" != sysroot ] || { say "$VOCORE_WINDOWS_SYSROOT"; exit; }
build windows
while [ "$#" -gt 0 ]; do
    case $1 in
    build) ;;
    package) make_package ;;
    road) run_road ;;
    test)
        names=()
        while [ "$#" -gt 1 ] && [[ $2 =~ ^[A-Z] ]]; do names+=("$2"); shift; done
        run_tests "${names[@]}" ;;
    *) fail "unknown word: $1" ;;
    esac
    shift
done
say "Windows: done"
