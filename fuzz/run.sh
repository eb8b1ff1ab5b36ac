#!/usr/bin/env bash
# Runs each fuzz entry for a while, starting from its seeds; finds of earlier runs are kept in build/fuzz/corpus.
# usage: fuzz/run.sh [SECONDS] [ENTRY...]        (default: 60 seconds each, all entries)
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/setup.sh"

seconds=${1:-60}
[ $# -eq 0 ] || shift
[[ $seconds =~ ^[0-9]+$ ]] || fail "usage: fuzz/run.sh [SECONDS] [ENTRY...]"
for package in clang libclang-rt-14-dev; do
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || fail "install $package first"
done

# Documents are written through to the disk; in memory an entry runs a hundred times as often.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm

build fuzz
cd "$vocore_root"
[ $# -gt 0 ] || set -- $(sed -n 's/^vocore_fuzz(\([a-z0-9]*\) .*/\1/p' fuzz/CMakeLists.txt)

for entry in "$@"; do
    corpus=build/fuzz/corpus/$entry
    mkdir -p "$corpus" "build/fuzz/findings"
    say "$entry for $seconds seconds"
    dictionary=()
    case $entry in
    declarations | definition | listing | registry | results | xml) dictionary=(-dict=fuzz/xml.dict) ;;
    esac
    "build/fuzz/fuzz/fuzz_$entry" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=16384 \
        -artifact_prefix="build/fuzz/findings/$entry-" -print_final_stats=1 "${dictionary[@]}" \
        "$corpus" "fuzz/seeds/$entry" >"build/fuzz/$entry.log" 2>&1 \
        || { tail -n 60 "build/fuzz/$entry.log" >&2; fail "$entry found something: build/fuzz/findings"; }
    grep -E 'stat::number_of_executed_units|stat::peak_rss_mb' "build/fuzz/$entry.log"
done
say "no finding"
