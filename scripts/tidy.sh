#!/usr/bin/env bash
# Holds the sources of the library and the tool to .clang-tidy; ends with an error at the first kind of finding.
# usage: scripts/tidy.sh [FILE...]        all of them without a name
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$vocore_root"

say "clang-tidy"
# Of a build by clang without precompiled headers, which it could not read; nothing is compiled.
cmake --preset debug -B build/tidy -DCMAKE_CXX_COMPILER=clang++ -DVOCORE_PRECOMPILE_HEADERS=OFF -DVOCORE_BUILD_TESTS=OFF >/dev/null
sources() {
    sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/tidy/compile_commands.json | grep -v "^$vocore_root/build/"
}
if [ $# -gt 0 ]; then printf '%s\0' "$@"; else sources | tr '\n' '\0'; fi |
    xargs -0 -n 4 -P "$vocore_jobs" clang-tidy --quiet -p build/tidy 2>/dev/null ||
    fail "clang-tidy: see above"
