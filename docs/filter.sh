#!/bin/sh
# What Doxygen reads in place of a public header: the same, in the group of its folder and documented as a file. Nothing
# moves to another line, so that warnings name the right one. The base of the containers goes without its arguments, for
# a base that has the class itself among them is not followed and its members would not be shown.
folder=${1##*/src/}
case $1 in
*Export.h) cat "$1" ;; # macros that no documentation shows
*/src/*.h) printf '/** @file */ /** @addtogroup %s */ /** @{ */ ' "${folder%%/*}" &&
    sed 's/: public VoContainerBase<.*/: public VoContainerBase/' "$1" && printf '/** @} */\n' ;;
*) cat "$1" ;;
esac
