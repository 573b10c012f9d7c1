#!/bin/sh
# Runs a program that sees folders of its own in the place of /tmp and of the home folder.
# usage: apart.sh TREE FOLDER HOME COMMAND...: in a mount namespace of its own; FOLDER is empty and TREE stays visible.
# exit: the command's own code; 125 the folders could not be made.
set -e
trap 'exit 125' EXIT
tree=$1 folder=$2 home=$3
shift 3
number=0
for hidden in /tmp "$home"; do
  number=$((number + 1))
  own=$folder/apart-$number
  [ -d "$hidden" ] || continue
  mkdir -m 1777 "$own"
  case $tree/ in
    "$hidden"/*)
      mkdir -p "$own${tree#"$hidden"}"
      mount --bind "$tree" "$own${tree#"$hidden"}"
      ;;
  esac
  mount --rbind "$own" "$hidden"
done
# What is not among these folders is not the tests' to write.
mount -o remount,bind,ro /
cd /tmp
exec "$@"
