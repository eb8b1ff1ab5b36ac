#!/usr/bin/env bash
# Builds the release build and runs the main job on a real folder of this machine, in a scratch directory: publishes the
# folder as 1.0.0 and a changed copy as 1.1.0, installs the first, updates to the second, and uninstalls it; then the same
# over a web server that it starts. Every step is checked against the folders themselves.
# usage: ./run.sh [FOLDER]        (the default: the headers and build files of the installed Qt)
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/scripts/setup.sh"
. "$vocore_root/scripts/server.sh"

[ $# -le 1 ] || fail "usage: ./run.sh [FOLDER]"
[ $# -eq 0 ] || [ -d "$1" ] || fail "\"$1\" is not a folder"

install_missing_packages
build release --target vo
vo=$vocore_root/build/release/tools/vo/vo

scratch=$(mktemp -d "${TMPDIR:-/tmp}/vocore-run.XXXXXX")
trap 'stop_server "$scratch/server"; rm -rf "$scratch"' EXIT
export VOAPPDATAPATH=$scratch/data
old=$scratch/source-1.0.0 new=$scratch/source-1.1.0 app=$scratch/app declarations=$scratch/published/declarations.xml

# ---- helpers

steps=0
step() { steps=$((steps + 1)); printf '\n==> %d. %s\n' "$steps" "$*"; }
ok() { printf '    ok: %s\n' "$*"; }

# expect CODE ARGUMENTS...: runs vo, shows what it prints, keeps it in $output, and fails on another exit code.
expect() {
    local code=0 wanted=$1
    shift
    output=$("$vo" "$@" 2>&1) || code=$?
    [ "$verbose_steps" = no ] || printf '%s\n' "$output" | sed 's/^/    /'
    if [ "$code" -ne "$wanted" ]; then
        printf '%s\n' "$output" | tail -n 20 >&2
        fail "vo $1 ended with exit code $code, expected $wanted"
    fi
}
verbose_steps=yes

# figure LABEL: the text behind a label of the last output.
figure() { awk -v label="$1" 'index($0, label) == 1 { print substr($0, 19) }' <<<"$output"; }

# equal WHAT GOT WANTED
equal() { [ "$2" = "$3" ] || fail "$1: got \"$2\", expected \"$3\""; ok "$1: $2"; }

same_tree() {
    local differences
    differences=$(diff -r "$1" "$2" 2>&1) || { head -n 20 <<<"$differences" >&2; fail "$1 and $2 differ"; }
    ok "the installed tree is byte-equal to the source ($(find "$2" -type f | wc -l) files, diff -r)"
}

# Copies the regular files of a folder, and only these: links and empty folders are not published.
copy_files() {
    mkdir -p "$2"
    (cd "$1" && find . -type f -print0 | tar --null -T - -cf -) | tar -xf - -C "$2"
}

# ---- the source folders

step "A real folder, and a changed copy of it"
if [ $# -eq 1 ]; then
    copy_files "$1" "$old"
else
    copy_files "$(pkg-config --variable=includedir Qt5Core)" "$old/headers"
    copy_files "$(pkg-config --variable=libdir Qt5Core)/qt5/mkspecs" "$old/mkspecs"
fi
cp -a "$old" "$new"
mapfile -d '' -t files < <(cd "$new" && find . -type f -print0 | LC_ALL=C sort -z)
count=${#files[@]}
[ "$count" -ge 100 ] || fail "the folder has $count files; at least 100 are needed to change some of every kind"
[ $# -eq 1 ] || [ "$count" -ge 2000 ] || fail "only $count files of Qt are installed"

changed=0 removed=0 added=0 moved=0
mkdir "$new/moved files" "$new/added files"
for ((i = 0; i < count; i++)); do
    file=$new/${files[i]}
    case $((i % 100)) in
    10 | 60) printf '\nchanged\n' >>"$file"; changed=$((changed + 1)) ;;
    20) rm "$file"; removed=$((removed + 1)) ;;
    30) { cat "$file"; printf 'added\n'; } >"$new/added files/$i"; added=$((added + 1)) ;;
    40) if ((i % 400 == 40)); then mv "$file" "$new/moved files/$i"; moved=$((moved + 1)); fi ;;
    esac
done
find "$new" -type d -empty -delete
ok "$count files, $(du -sb "$old" | cut -f1) bytes; then $changed changed, $removed removed, $added added, $moved moved"

# ---- publish

step "Publish 1.0.0 and 1.1.0"
expect 0 publish "$old" --to "$declarations" --name "Example package" --release 1.0.0 --chunk-size 256K
package=$(figure package)
equal "files of 1.0.0" "$(figure files)" "$count"
expect 0 publish "$new" --to "$declarations" --name "Example package" --release 1.1.0 --chunk-size 256K
equal "package of 1.1.0" "$(figure package)" "$package"
equal "files of 1.1.0" "$(figure files)" "$((count - removed + added))"
chunks=$(figure chunks)
definition() { printf '%s/published/packages/%s/%s/package.xml' "$scratch" "$package" "$1"; }

step "Compare the releases, and verify the second against its source"
verbose_steps=no
expect 0 diff "$(definition 1.0.0.0)" "$(definition 1.1.0.0)"
equal "files added" "$(figure added | tail -n 1)" "$((added + moved))"
equal "files modified" "$(figure modified | tail -n 1)" "$changed"
equal "files removed" "$(figure removed | tail -n 1)" "$((removed + moved))"
expect 0 verify-release "$(definition 1.1.0.0)" --source "$new"
ok "a fresh installation of 1.1.0 equals its source"

# ---- install and update

step "Install 1.0.0"
verbose_steps=yes
expect 0 install "$declarations" --release 1.0.0 --to "$app"
equal "files added" "$(figure 'files added')" "$count"
same_tree "$old" "$app"

step "Update to 1.1.0, with nothing but the planned chunks at hand"
verbose_steps=no
expect 0 plan "$declarations"
planned=$(figure 'chunks to fetch')
planned_bytes=$(figure 'bytes to fetch')
[ "$planned" -lt "$chunks" ] || ok "note: the changes touch every chunk"
mapfile -t planned_chunks < <(awk '$1 == "fetch" { print $2 }' <<<"$output")
equal "chunks listed in the plan" "${#planned_chunks[@]}" "$planned"
release=$(dirname "$(definition 1.1.0.0)")
mv "$release/chunks" "$release/all-chunks"
mkdir "$release/chunks"
for chunk in "${planned_chunks[@]}"; do mv "$release/all-chunks/$(basename "$chunk")" "$release/chunks/"; done
find "$release/chunks" -type f -exec touch -a -d '2001-01-01' {} +
verbose_steps=yes
expect 0 install "$declarations"
equal "chunks fetched, of $chunks" "$(figure 'chunks fetched')" "$planned"
equal "bytes fetched" "$(figure 'bytes fetched')" "$planned_bytes"
equal "files updated" "$(figure 'files updated')" "$changed"
read_chunks=$(find "$release/chunks" -type f -newerat '2001-01-02' | wc -l)
if [ "$read_chunks" -gt 0 ]; then
    equal "chunk files that were read, by their access times" "$read_chunks" "$planned"
else
    ok "the file system keeps no access times to count the chunk files that were read"
fi
same_tree "$new" "$app"
mv "$release/all-chunks"/* "$release/chunks/" 2>/dev/null || true
rmdir "$release/all-chunks"

step "Install 1.1.0 again: nothing to do"
before=$(find "$app" -type f -printf '%p %T@ %i\n' | sort | cksum)
expect 3 install "$declarations"
equal "files, times and inodes" "$(find "$app" -type f -printf '%p %T@ %i\n' | sort | cksum)" "$before"

step "The record"
expect 0 installed
grep -q "^$package  Example package  1.1.0  $((count - removed + added)) files  $app\$" <<<"$output" || fail "the record is wrong"
[ ! -e "$VOAPPDATAPATH/updates/download/$package" ] || fail "staged chunks were left behind"
ok "registry and listing say so, and staging is empty"

# ---- damage

step "Damage two files; verify finds them, repair mends them"
mapfile -d '' -t files < <(cd "$app" && find . -type f -size +0 -print0 | LC_ALL=C sort -z)
rm "$app/${files[0]}"
printf 'X' | dd of="$app/${files[1]}" bs=1 count=1 conv=notrunc status=none
expect 4 verify "$package"
equal "missing" "$(figure missing | tail -n 1)" 1
equal "changed" "$(figure changed | tail -n 1)" 1
expect 0 repair "$package"
same_tree "$new" "$app"

# ---- uninstall

step "Uninstall beside a foreign file"
foreign=$(dirname "$app/${files[-1]#./}")/foreign.txt
printf 'not of the package\n' >"$foreign"
expect 0 uninstall "$package"
equal "what is left" "$(find "$app" -type f)" "$foreign"
equal "folders that are left" "$(find "$app" -type d | wc -l)" "$(($(tr -cd / <<<"${foreign#"$app"}" | wc -c)))"
rm -r "$app"
expect 0 installed
[ -z "$(find "$VOAPPDATAPATH" -type f ! -name packages.xml ! -name '*.lock')" ] || fail "records were left behind"

# ---- the same from a server

step "The same over a web server: http, and https for the update"
start_server "$scratch/published" "$scratch/server"
ok "nginx serves the published folder at $http_url and $https_url"
expect 0 releases "$http_url/declarations.xml"
equal "releases on the server" "$(grep -c "^$package" <<<"$output")" 2
verbose_steps=yes
expect 0 install "$http_url/declarations.xml" --release 1.0.0 --to "$app"
same_tree "$old" "$app"
verbose_steps=no
expect 0 plan "$https_url/declarations.xml" --ca-file "$ca_file" --move
equal "chunks to fetch" "$(figure 'chunks to fetch')" "$planned"
mapfile -t planned_chunks < <(awk '$1 == "fetch" { print $2 }' <<<"$output" | xargs -n 1 basename | LC_ALL=C sort)

: >"$access_log"
verbose_steps=yes
expect 0 install "$https_url/declarations.xml" --ca-file "$ca_file" --move
verbose_steps=no
same_tree "$new" "$app"
fetched=$(awk '$1 == "GET" && $2 ~ /[.]vochk$/ { sub(".*/", "", $2); print $2 }' "$access_log" | LC_ALL=C sort)
equal "chunks that the server sent, by its log" "$(wc -l <<<"$fetched")" "$planned"
equal "the same chunks as planned" "$(cksum <<<"$fetched")" "$(printf '%s\n' "${planned_chunks[@]}" | cksum)"
sent=$(awk '$1 == "GET" && $2 ~ /[.]vochk$/ { sum += $4 } END { print sum + 0 }' "$access_log")
equal "bytes of chunks that the server sent" "$sent" "$(find "$release/chunks" -type f -printf '%f %s\n' \
    | awk 'NR == FNR { wanted[$1]; next } $1 in wanted { sum += $2 } END { print sum + 0 }' \
        <(printf '%s\n' "${planned_chunks[@]}") -)"
expect 3 install "$http_url/declarations.xml" --move
expect 0 verify "$package"
expect 0 installed
grep -q "^$package  Example package  1.1.0  $((count - removed + added)) files  $app\$" <<<"$output" || fail "the record is wrong"
[ ! -e "$VOAPPDATAPATH/updates/download/$package" ] || fail "staged chunks were left behind"
ok "registry and listing say so, and staging is empty"

step "The server ends: a clear error, and nothing is lost"
stop_server "$scratch/server"
expect 1 install "$http_url/declarations.xml"
printf '%s\n' "$output" | sed 's/^/    /'
same_tree "$new" "$app"
expect 0 uninstall "$package"
[ ! -e "$app" ] || fail "files were left behind"

printf '\n==> VERDICT: all %d steps are right: %d files published, installed, updated with %d of %d chunks, repaired and removed, from the disk and over a server\n' \
    "$steps" "$count" "$planned" "$chunks"
