#!/usr/bin/env bash
# Signed releases from the first key to its replacement, in a scratch folder. What must be refused is tried as well.
# usage: trust.sh PROGRAM
set -euo pipefail

vo=$(realpath "$1")
scratch=$(mktemp -d "${TMPDIR:-/tmp}/vocore-trust.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
export VOAPPDATAPATH=$scratch/data
cd "$scratch"
mkdir site
echo "a passphrase" >pass

# run CODE SENTENCE ARGUMENTS...: the program must end with the code, and say the sentence.
run() {
    local code=0 wanted=$1 sentence=$2 output
    shift 2
    printf '$ vo %s\n' "$*"
    output=$("$vo" "$@" 2>&1) || code=$?
    printf '%s\n\n' "$output"
    [ "$code" -eq "$wanted" ] || { echo "exit code $code, expected $wanted" >&2; exit 1; }
    grep -qF -- "$sentence" <<<"$output" || { echo "does not say: $sentence" >&2; exit 1; }
}
signed() { run 0 "$1" "${@:2}" --passphrase-file pass; }

echo "# A key, a signed release, an installation that knows the key"
signed "ours.key.pub" key new ours.key --quick
signed "second.key.pub" key new second.key --quick
id=$(sed -n 's/.*public key //p' ours.key.pub)
echo one >site/file
signed "1 of 1" publish site --to pub/d.xml --name Site --release 1.0.0 --sign ours.key
run 0 "" install pub/d.xml --to app --key ours.key.pub
minisign=$(command -v minisign || true)
[ -z "$minisign" ] || minisign -q -V -p ours.key.pub -m pub/manifest.xml -x "pub/manifest.xml.$id.minisig"
cp -r pub first

echo "# The next release: a beta, promoted, rolled out to nobody and then to all"
echo two >site/file
signed "1 of 1" publish site --to pub/d.xml --name Site --release 2.0.0 --channel beta --sign ours.key
run 0 "not offered: it is of the channel" releases pub/d.xml
run 3 "" plan pub/d.xml
signed "serial" promote pub/d.xml --sign ours.key
signed "0%" rollout pub/d.xml --share 0% --sign ours.key
run 6 "it is rolled out to a share" install pub/d.xml --release 2.0.0
signed "100%" rollout pub/d.xml --share 100% --sign ours.key
run 0 "" install pub/d.xml
grep -q two app/file

echo "# A build machine without a key: its release waits, and a timer does not vouch for it"
echo three >site/file
run 0 "waits for more signatures" publish site --to pub/d.xml --name Site --release 3.0.0
run 3 "already up to date" install pub/d.xml
run 6 "Release is not signed yet" sign pub/d.xml --sign ours.key --passphrase-file pass --refresh
signed "1 of 1" sign pub/d.xml --sign ours.key
run 0 "" install pub/d.xml

echo "# What must be refused"
mv pub good && mv first pub
run 6 "Manifest is older than one that was seen before" install pub/d.xml
rm -r pub && cp -r good pub
sed -i 's/name="Site"/name="Evil"/' pub/d.xml
run 6 "Document is not the one that the manifest lists" install pub/d.xml
rm -r pub && cp -r good pub
rm pub/*.minisig
run 6 "Signature is missing" install pub/d.xml
rm -r pub && cp -r good pub
signed "1 of 1" sign pub/d.xml --sign ours.key --expires 1s
code=0
while [ "$code" -ne 6 ]; do
    code=0
    "$vo" install pub/d.xml >/dev/null 2>&1 || code=$?
done
run 6 "Manifest has expired" install pub/d.xml
run 3 "already up to date" install pub/d.xml --allow-expired
signed "1 of 1" sign pub/d.xml --sign ours.key

echo "# The first key goes, the second comes; the installation follows by itself"
signed "number 2" keys rotate pub/d.xml --sign ours.key --sign second.key --add second.key.pub --remove "$id"
run 1 "Key does not sign releases here" sign pub/d.xml --sign ours.key --passphrase-file pass
echo four >site/file
signed "1 of 1" publish site --to pub/d.xml --name Site --release 4.0.0 --sign second.key
run 0 "" install pub/d.xml
run 0 "" verify-release pub/d.xml --key ours.key.pub

echo "# A bad release is withdrawn; old ones and leftovers go"
signed "serial" withdraw pub/d.xml --release 4.0.0 --sign second.key
run 6 "it was withdrawn by its publisher" install pub/d.xml --release 4.0.0
signed "release Site 1.0.0.0" prune pub/d.xml --keep 2 --sign second.key
run 3 "nothing to prune" prune pub/d.xml --keep 2
run 0 "" uninstall Site
echo "done"
