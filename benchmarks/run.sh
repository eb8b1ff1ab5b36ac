#!/usr/bin/env bash
# Measures the library beside what it is built on (the floor) and beside what its users would pick instead (the peer),
# and prints one table with a section for each road through it: job, ours, floor, peer, ratio, goal, met.
# usage: benchmarks/run.sh [--smoke] [road|downloads|documents|numbers]...        (the default: all four)
#
# All sides of a row run in turns, at least five times; figures are medians of processor time. What is parallel is
# measured in wall time, when two cores are found free. The data are the machine's own headers and libraries,
# VOCORE_BENCHMARK_MB megabytes of them (128; up to 500), and generated documents. --smoke runs everything once on next
# to nothing, without installing peers, and fails when a case or a program is missing.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/setup.sh"

smoke=() tables=()
for argument in "$@"; do
    case $argument in
    --smoke) smoke=(--smoke) ;;
    *) [ -e "$vocore_root/benchmarks/$argument.table" ] || [ -e "$vocore_root/benchmarks/$argument.py" ] ||
        fail "there is no table \"$argument\""
        tables+=("$argument") ;;
    esac
done
[ ${#tables[@]} -gt 0 ] || tables=(road downloads documents numbers)

[ ${#smoke[@]} -gt 0 ] || vocore_package_lists+=("$vocore_root/scripts/packages.benchmarks")
install_missing_packages
build benchmarks
exec python3 "$vocore_root/benchmarks/harness.py" "${smoke[@]}" --build "$vocore_root/build/benchmarks" "${tables[@]}"
