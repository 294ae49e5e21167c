#!/usr/bin/env bash
# The manual page as it is shown: rendered_page.sh PROGRAM PAGE. roff finds nothing to warn of, and every option that
# the help of a command lists begins an item in that command's section. Ends with 77 without groff.
set -euo pipefail

program=$1
page=$2
command -v groff >/dev/null || { echo "no groff here"; exit 77; }

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# -c -b -o -u: no escape sequences, no overstriking
groff -man -Tascii -ww -rLL=100n -P-cbou "$page" >"$scratch/text" 2>"$scratch/warnings"

problems=0
problem() { echo "$1"; ((++problems)); }
[[ ! -s $scratch/warnings ]] || problem "groff: $(<"$scratch/warnings")"

# section NAME: the lines below its heading
section() { awk -v heading="$1" '/^[A-Z]/ { inside = ($0 == heading) } inside' "$scratch/text"; }
# options [COMMAND]: the names that its help lists
options() { "$program" "$@" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'; }

mapfile -t commands < <("$program" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
((${#commands[@]} >= 3)) || problem "only the commands ${commands[*]} in the help"
checked=0
for command in "" "${commands[@]}"; do
  heading="ORVCOX ${command^^}"
  [[ -n $command ]] || heading=OPTIONS
  for option in $(options ${command:+"$command"}); do
    section "$heading" | grep -E -- "^ +(-[a-z], )?$option( |\$)" >/dev/null || problem "$heading: no item $option"
    ((++checked))
  done
done
echo "$checked options of ${#commands[@]} commands looked up, $problems problems"
((problems == 0))
