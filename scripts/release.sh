#!/usr/bin/env bash
# Packs what is committed as a release: build/vocore-VERSION.tar.gz, the same bytes from the same commit on any machine.
# usage: scripts/release.sh [--check]     with --check the tarball is built twice, in folders of different names, and what
#                                         was built is compared
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$vocore_root"

version=$(sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' CMakeLists.txt | head -n 1)
[ -n "$version" ] || fail "no version in CMakeLists.txt"
grep -q "^## $version\b" CHANGELOG.md || fail "CHANGELOG.md says nothing of $version"
head -n 1 debian/changelog | grep -qF "($version)" || fail "debian/changelog is of another version than $version"
[ -z "$(git status --porcelain --untracked-files=no)" ] || fail "something is not committed"

mkdir -p build
tarball=build/vocore-$version.tar.gz
git archive --format=tar --prefix="vocore-$version/" HEAD | gzip -n9 >"$tarball"
say "$tarball  $(sha256sum "$tarball" | cut -d' ' -f1)"
[ "${1:-}" = --check ] || exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH CCACHE_DISABLE=1
for folder in first another/one; do
    mkdir -p "$work/$folder"
    tar -xzf "$tarball" -C "$work/$folder"
    say "building in $folder"
    cmake -S "$work/$folder/vocore-$version" -B "$work/$folder/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOCORE_BUILD_TESTS=OFF \
        -DCMAKE_UNITY_BUILD=ON >/dev/null
    cmake --build "$work/$folder/build" -j "$vocore_jobs" >/dev/null
    DESTDIR="$work/$folder/installed" cmake --install "$work/$folder/build" --prefix /usr >/dev/null
done
diff -r "$work/first/installed" "$work/another/one/installed" || fail "the two builds differ"
say "both builds are the same, to the byte"
