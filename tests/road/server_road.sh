#!/usr/bin/env bash
# The road of an update over nginx: http and https, what the server's log tells of it, interruptions at many moments, a
# mirror, damage on the server, and certificates that nobody vouches for.
# usage: server_road.sh PROGRAM
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/setup.sh"
. "$vocore_root/scripts/server.sh"

vo=$1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/vocore-road.XXXXXX")
trap 'stop_server "$scratch/server"; stop_server "$scratch/slow"; rm -rf "$scratch"' EXIT
export VOAPPDATAPATH=$scratch/data
app=$scratch/app published=$scratch/published

# run CODE ARGUMENTS...: the output is kept in $output
run() {
    local code=0 wanted=$1
    shift
    output=$("$vo" "$@" 2>&1) || code=$?
    [ "$code" -eq "$wanted" ] || { printf '%s\n' "$output" >&2; fail "vo $*: exit code $code, expected $wanted"; }
}
equal() { [ "$2" = "$3" ] || fail "$1: got \"$2\", expected \"$3\""; }
figure() { awk -v label="$1" 'index($0, label) == 1 { print substr($0, 19) }' <<<"$output"; }
# Text that output must hold.
says() { grep -qF -- "$1" <<<"$output" || { printf '%s\n' "$output" >&2; fail "the output does not say \"$1\""; }; }
same_tree() { diff -r "$1" "$app" >&2 || fail "the installed tree is not that of $(basename "$1")"; }
registry() { cat "$VOAPPDATAPATH/updates/installed/"*.xml 2>/dev/null | cksum; }
# The chunks that a log shows as sent, one a line, with their number of requests.
sent() { awk '$1 == "GET" && $3 == 200 && $2 ~ /[.]vochk$/ { sub(".*/", "", $2); print $2 }' "$1" | LC_ALL=C sort | uniq -c; }
planned() { awk '$1 == "fetch" { sub(".*/", "", $2); print $2 }' <<<"$output" | LC_ALL=C sort | uniq -c; }
start_anew() { rm -rf "$app" "$VOAPPDATAPATH"; }

# ---- two releases of 61 files that do not compress well

mkdir -p "$scratch/one/deep/er"
for i in $(seq 60); do
    openssl enc -aes-128-ctr -K "$(printf '%032x' "$i")" -iv 00000000000000000000000000000000 -in /dev/zero 2>/dev/null \
        | head -c $((i * 97 % 9000)) >"$scratch/one/deep/$i.bin" || true
done
printf 'text\n' >"$scratch/one/deep/er/Grün & <blank>.txt"
cp -r "$scratch/one" "$scratch/two"
for i in 7 30 47; do printf 'more' >>"$scratch/two/deep/$i.bin"; done
rm "$scratch/two/deep/11.bin"
printf 'added\n' >"$scratch/two/added file"
for release in one:1.0.0 two:1.1.0; do
    run 0 publish "$scratch/${release%:*}" --to "$published/declarations.xml" --name Road --release "${release#*:}" \
        --chunk-size 8K --no-portable
    package=$(figure package)
done

# ---- http, then https

start_server "$published" "$scratch/server"
run 0 releases "$http_url/declarations.xml"
equal "releases" "$(grep -c "^$package" <<<"$output")" 2
run 0 plan "$http_url/declarations.xml" --release 1.0.0 --to "$app"
wanted=$(planned)
: >"$access_log"
run 0 install "$http_url/declarations.xml" --release 1.0.0 --to "$app"
same_tree "$scratch/one"
equal "chunks sent" "$(sent "$access_log")" "$wanted"

run 1 plan "$https_url/declarations.xml"
says "cannot read $https_url/declarations.xml: SSL handshake failed"
run 6 plan "$https_url/declarations.xml" --ca-file "$ca_file"
says "was installed from $http_url"
run 0 plan "$https_url/declarations.xml" --ca-file "$ca_file" --move
wanted=$(planned)
[ "$(wc -l <<<"$wanted")" -lt "$(ls "$published/packages/$package/1.1.0.0/chunks" | wc -l)" ] || fail "the plan wants all chunks"
: >"$access_log"
run 0 install "$https_url/declarations.xml" --ca-file "$ca_file" --move
same_tree "$scratch/two"
equal "chunks sent" "$(sent "$access_log")" "$wanted"
run 6 install "$http_url/declarations.xml"
run 3 install "$http_url/declarations.xml" --move
run 0 installed
says "$package  Road  1.1.0  61 files  $app"
[ ! -e "$VOAPPDATAPATH/updates/download/$package" ] || fail "staged chunks were left behind"

# Redirects: only to hosts that are allowed, and never away from https.
run 0 releases "$http_url/moved/declarations.xml" --redirect-host 127.0.0.1
equal "releases behind a redirect" "$(grep -c "^$package" <<<"$output")" 2
run 1 releases "$http_url/moved/declarations.xml"
says "Unsafe domain redirect from ($http_url/moved/declarations.xml) to ($http_url/declarations.xml)"
run 1 releases "$https_url/moved/declarations.xml" --ca-file "$ca_file" --redirect-host 127.0.0.1
says "Unsafe scheme redirect from ($https_url/moved/declarations.xml) to ($http_url/declarations.xml)"

# Repair goes back to the server that is recorded.
run 0 install "$http_url/declarations.xml" --release 1.0.0 --allow-downgrade
printf X >>"$app/deep/5.bin"
rm "$app/deep/6.bin"
run 0 repair Road
same_tree "$scratch/one"
before=$(registry)

# ---- what a server can do wrong

chunks=$published/packages/$package/1.1.0.0/chunks
run 0 plan "$http_url/declarations.xml"
victim=$chunks/$(planned | awk 'NR == 1 { print $2 }')
cp "$victim" "$scratch/victim"
broken() {
    local text=$1
    run 1 install "$http_url/declarations.xml"
    says "$text"
    same_tree "$scratch/one"
    equal "registry" "$(registry)" "$before"
}
rm "$victim"
broken "Not Found"
head -c "$(stat -c %s "$scratch/victim")" /dev/zero >"$victim"
: >"$access_log"
broken "File checksum does not match for: "
equal "requests of the chunk whose bytes were wrong" \
    "$(grep -c "^GET .*/$(basename "$victim") 200" "$access_log")" 4
head -c 100000000 /dev/zero >"$victim"
broken "Download larger than allowed"
printf '<packages' >"$scratch/definition"
cp "$published/packages/$package/1.1.0.0/package.xml" "$scratch/package.xml"
cp "$scratch/definition" "$published/packages/$package/1.1.0.0/package.xml"
run 1 install "$http_url/declarations.xml"
same_tree "$scratch/one"
cp "$scratch/package.xml" "$published/packages/$package/1.1.0.0/package.xml"
rm "$victim"

# The damaged copy stands on the first server, a whole one on the mirror.
cp -r "$published" "$scratch/whole"
cp "$scratch/victim" "$scratch/whole/packages/$package/1.1.0.0/chunks/$(basename "$victim")"
broken_url=$http_url
start_server "$scratch/whole" "$scratch/slow"
run 0 install "$broken_url/declarations.xml" --mirror "$http_url/"
same_tree "$scratch/two"
cp "$scratch/victim" "$victim"
stop_server "$scratch/slow"
stop_server "$scratch/server"
run 1 install "$broken_url/declarations.xml" --release 1.0.0 --allow-downgrade --retries 1
says "Connection refused"
same_tree "$scratch/two"

# ---- interrupted at many moments, the same command completes

# Of some chunks the server sends a byte in a second: when all others have arrived the program is in the middle of its
# work, for as long as it takes to interrupt it there. Fewer than it has connections, so that the others do arrive.
staged() { find "$VOAPPDATAPATH/updates/download" -name '*.vochk' -type f 2>/dev/null | wc -l; }
largest=$(cd "$chunks" && ls -S)
total=$(wc -l <<<"$largest")
for slow in "$total" 5 3 1; do
    start_anew
    start_server "$published" "$scratch/slow" 1 "$(head -n "$slow" <<<"$largest" | paste -sd '|')"
    # A shell lets what runs in the background ignore the interrupt.
    env --default-signal=INT "$vo" install "$http_url/declarations.xml" --to "$app" -q >"$scratch/output" 2>&1 &
    program=$!
    # The directory shows that the program is past its beginning, where it could not yet be interrupted in order.
    until [ -d "$VOAPPDATAPATH/updates/download/$package" ] && [ "$(staged)" -eq $((total - slow)) ]; do
        [ -n "$(jobs -rp)" ] || { cat "$scratch/output" >&2; fail "the program ended before it was interrupted"; }
        sleep 0.02
    done
    kill -INT "$program"
    code=0
    wait "$program" || code=$?
    [ "$code" -eq 5 ] || { cat "$scratch/output" >&2; fail "interrupted with $slow chunks to come: exit code $code"; }
    equal "registry after the interruption" "$(registry)" "$(cksum </dev/null)"
    [ ! -e "$app" ] || fail "files were installed by an interrupted download"
    equal "chunks kept" "$(staged)" $((total - slow))
    stop_server "$scratch/slow"
done
kept=$(find "$VOAPPDATAPATH/updates/download" -name '*.vochk' -printf '%f\n' | LC_ALL=C sort)
start_server "$published" "$scratch/slow"
: >"$access_log"
run 0 install "$http_url/declarations.xml" --to "$app"
equal "chunks that were fetched again" "$(comm -12 <(sent "$access_log" | awk '{ print $2 }') <(printf '%s\n' "$kept"))" ""
same_tree "$scratch/two"
say "the road over a server is right"
