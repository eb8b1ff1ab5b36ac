#!/usr/bin/env bash
# Holds the sources of the library and the tool to .clang-tidy; ends with an error at the first kind of finding.
# usage: scripts/tidy.sh [FILE...]        all of them without a name
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$vocore_root"

say "clang-tidy"
# Of a build by clang without precompiled headers, which it could not read; nothing is compiled. As a unity build, for
# most of the time would go to the headers, which are read once for a dozen sources then; what one source's local names
# shadow in another means nothing.
cmake --preset debug -B build/tidy -DCMAKE_CXX_COMPILER=clang++ -DVOCORE_PRECOMPILE_HEADERS=OFF -DVOCORE_BUILD_TESTS=OFF \
    -DCMAKE_UNITY_BUILD=$([ $# -gt 0 ] && echo OFF || echo ON) >/dev/null
sources() {
    sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/tidy/compile_commands.json |
        grep -e "/Unity/" -e "^$vocore_root/\(src\|tools\)/"
}
if [ $# -gt 0 ]; then printf '%s\0' "$@"; else sources | tr '\n' '\0'; fi |
    xargs -0 -n 3 -P "$vocore_jobs" clang-tidy --quiet --extra-arg=-Wno-shadow -p build/tidy 2>/dev/null ||
    fail "clang-tidy: see above"
