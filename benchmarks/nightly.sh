#!/usr/bin/env bash
# What takes too long for every change: how the jobs grow with bytes and files, and the largest trees (200,000 files;
# one file of 6 GB). Builds the preset "release" and prints the tables of benchmarks/growth.py.
# usage: benchmarks/nightly.sh [FOLDER]        (with 25 GB free; by default the one for temporary files)
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/setup.sh"

install_missing_packages
build release
for largest in "" --largest; do
    python3 "$vocore_root/benchmarks/growth.py" "$vocore_root/build/release/tools/vo/vo" $largest ${1:+--in "$1"}
done
