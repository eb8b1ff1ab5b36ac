#!/usr/bin/env bash
# Builds the Debian packages from what is committed (where there is no repository, from what lies there), has lintian
# look at them, installs them into a fresh root, and there builds a consumer and takes the tool along its road.
# usage: scripts/debian.sh [FOLDER]       the packages are left in FOLDER (build/debian without one)
# As root, for a root folder is made and entered.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
vocore_package_lists+=("$vocore_root/scripts/packages-debian")
install_missing_packages

out=$(mkdir -p "${1:-$vocore_root/build/debian}" && cd "${1:-$vocore_root/build/debian}" && pwd)
work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT

say "building the Debian packages"
mkdir "$work/source"
if git -C "$vocore_root" rev-parse HEAD >/dev/null 2>&1; then
    git -C "$vocore_root" archive HEAD
else
    tar -C "$vocore_root" --exclude=./build --exclude=./.git -cf - .
fi | tar -x -C "$work/source"
export CCACHE_DIR=${CCACHE_DIR:-$HOME/.cache/ccache} CCACHE_BASEDIR=$work/source CCACHE_NOHASHDIR=1
(cd "$work/source" && dpkg-buildpackage -b -us -uc -j"$vocore_jobs") >"$work/build.log" 2>&1 ||
    { tail -n 60 "$work/build.log" >&2; fail "dpkg-buildpackage"; }

say "lintian"
lintian --fail-on error,warning --suppress-tags no-nmu-in-changelog "$work"/*.changes || fail "lintian: see above"

say "a fresh root"
root=$work/root
cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources 2>/dev/null >"$work/sources" || true
if mmdebstrap --quiet --mode=root --variant=apt --include=g++,cmake,ninja-build \
    "$(. /etc/os-release && printf %s "$VERSION_CODENAME")" "$root" - <"$work/sources"
then
    mkdir "$root/debs"
    cp "$work"/*.deb "$root/debs"
    cp "$vocore_root/tests/debian/road.sh" "$root/road.sh"
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    # What the caller has for temporary files is not there.
    env -u TMPDIR chroot "$root" sh -c 'apt-get update -qq && apt-get install -y -qq --no-install-recommends /debs/*.deb' >"$work/install.log" 2>&1 ||
        { tail -n 40 "$work/install.log" >&2; fail "the packages do not install"; }
    env -u TMPDIR chroot "$root" sh /road.sh
else
    # A machine that lets nobody mount, or that has no mirror at hand: what is wrong there is not the packages.
    say "NOT INSTALLED: no fresh root is to be had on this machine, so the packages were built and looked at only"
fi

cp "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo "$out"
say "in $out: $(cd "$out" && ls ./*.deb | tr '\n' ' ')"
