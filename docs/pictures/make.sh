#!/usr/bin/env bash
# Makes the pictures of the tool's work anew: the three report pages, the progress line, a workbook. Those of icons and
# windows are made by the tests' target "pictures".
# usage: docs/pictures/make.sh VO          needs chromium, xvfb, xterm, imagemagick, libreoffice-calc and poppler-utils
set -euo pipefail
vo=$(realpath "$1")
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export VOAPPDATAPATH=$work/data HOME=$work

# page NAME WIDTH HEIGHT FILE
page() {
    chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --screenshot="$work/$1.png" --window-size="$2,$3" \
        "file://$4" >/dev/null 2>&1
    convert "$work/$1.png" -trim -bordercolor white -border 12 -colors 128 "$here/$1.png"
}

for analysis in sensitivity montecarlo worstcase; do
    python3 "$here/results.py" "$analysis" "$work/$analysis.xml"
    "$vo" report "$analysis" "$work/$analysis.xml" "$work/$analysis.html" -q
    page "report-$analysis" 1250 900 "$work/$analysis.html"
done

mkdir "$work/site" "$work/pub"
head -c 40000000 /dev/urandom >"$work/site/models.bin"
cat >"$work/typed.sh" <<'END'
PS1='$ '
echo '$ vo publish site --to pub/declarations.xml --name "Site files" --release 1.0.0'
"$VO" publish site --to pub/declarations.xml --name "Site files" --release 1.0.0 2>&1 | tail -n 3
echo '$ vo install http://127.0.0.1:8137/declarations.xml --to target --limit-rate 8M'
(cd pub && exec python3 -m http.server --bind 127.0.0.1 8137 >/dev/null 2>&1) & server=$!
sleep 1
"$VO" install http://127.0.0.1:8137/declarations.xml --to target --limit-rate 8M
kill $server
END
cat >"$work/terminal.sh" <<END
cd "$work" && VO="$vo" xterm -fa Monospace -fs 11 -geometry 92x12 -bg white -fg black -e bash typed.sh &
sleep 7
import -window root "$work/progress.png"
wait
END
xvfb-run -a -s "-screen 0 900x300x24" bash "$work/terminal.sh"
convert "$work/progress.png" -trim -bordercolor white -border 8 -colors 64 "$here/progress.png"

cat >"$work/parts.csv" <<'END'
Part,Value,Tolerance,Ordered,In stock
R1,4700,0.05,2026-03-28,true
R2,220.5,0.01,2026-04-02,true
"C1, film",0.000001,0.1,2026-04-02,false
END
(cd "$work" && "$vo" table parts.csv parts.xlsx --header 1 --styled -q && soffice --headless --convert-to pdf parts.xlsx >/dev/null 2>&1 &&
    pdftoppm -r 90 -png -singlefile parts.pdf workbook)
convert "$work/workbook.png" -trim -bordercolor white -border 12 -colors 64 "$here/workbook.png"
