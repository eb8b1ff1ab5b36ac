# Sourced by run.sh, test.sh and .ci/run: installs what is missing and sets how many jobs a build may run.
#
# Nothing is asked of the network when every package of the lists stands already.

vocore_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# One line to the user, apart from the output of the programs that run.
say() { printf '==> %s\n' "$*"; }

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }

vocore_package_lists=("$vocore_root/scripts/packages")
vocore_packages() { sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "${vocore_package_lists[@]}"; }

vocore_missing_packages() {
    local package
    for package in $(vocore_packages); do
        dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || printf '%s\n' "$package"
    done
}

install_missing_packages() {
    command -v dpkg-query >/dev/null || fail "dpkg-query not found: these scripts know Debian only; install by hand: $(vocore_packages | paste -sd' ')"
    local missing as_root=()
    missing=$(vocore_missing_packages)
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "missing packages, and neither root nor sudo: $(paste -sd' ' <<<"$missing")"
        as_root=(sudo)
    fi
    say "installing with apt-get: $(paste -sd' ' <<<"$missing")"
    "${as_root[@]}" apt-get update -qq || fail "apt-get update"
    # shellcheck disable=SC2086  # one word a package
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null \
        || fail "apt-get install"
}

# build PRESET [TARGET]: configures when needed and builds; quiet unless it fails.
build() {
    # Two presets that compile alike, and two clones, take from the cache what the other has compiled.
    export CCACHE_BASEDIR=$vocore_root CCACHE_NOHASHDIR=1
    local preset=$1 log status
    shift
    log=$(mktemp)
    say "building ($preset)"
    if (cd "$vocore_root" && cmake --preset "$preset" && cmake --build --preset "$preset" -j "$vocore_jobs" "$@") >"$log" 2>&1
    then status=0; else status=$?; tail -n 60 "$log" >&2; fi
    rm -f "$log"
    [ "$status" -eq 0 ] || fail "the $preset build"
}

vocore_jobs=${VOCORE_JOBS:-$(nproc 2>/dev/null || echo 2)}
