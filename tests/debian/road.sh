#!/bin/sh
# Runs in a fresh root in which the packages were installed: a consumer is built, the tool is taken along its road.
set -eu

cp -r "$(find /usr/share/doc -type d -path '*/examples/consumer')" /tmp/consumer
cmake -S /tmp/consumer -B /tmp/consumer/build -G Ninja >/dev/null
cmake --build /tmp/consumer/build >/dev/null
export VOAPPDATAPATH=/tmp/data
/tmp/consumer/build/consumer /tmp/consumer /tmp/consumer-pub/declarations.xml >/dev/null

! ldd /usr/bin/vo | grep -E 'libQt[56](Gui|Widgets)|libX11|libGL' || { echo "vo loads what shows"; exit 1; }
test -s /usr/share/man/man1/vo.1.gz
mkdir /tmp/pub
vo publish /usr/share/doc --to /tmp/pub/declarations.xml --name Documents --release 1.0.0 -q
vo install /tmp/pub/declarations.xml --to /tmp/target -q
vo verify Documents -q
vo uninstall Documents -q
test ! -e /tmp/target
apt-get remove -y -qq vocore-tools >/dev/null
test ! -e /usr/bin/vo
echo "the packages work"
