#!/usr/bin/env bash
# Builds the library, the tool and the tests, and runs all tests.
# usage: ./test.sh [ctest options]        (for example: ./test.sh -R Updater)
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/scripts/setup.sh"

install_missing_packages
build release
cd "$vocore_root"
ctest --preset release -j "$vocore_jobs" "$@"
