#!/usr/bin/env bash
# Completion in a real, interactive shell: completion.sh bash|zsh FOLDER CASES. FOLDER has the files orvcox and _orvcox;
# CASES says what is typed and which words come of it. Ends with 77 when this machine lacks the shell.
set -euo pipefail

shell=$1
folder=$(cd "$2" && pwd)
cases=$3
for needed in "$shell" script; do
  command -v "$needed" >/dev/null || { echo "no $needed here"; exit 77; }
done

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/home" "$scratch/work"
touch "$scratch/work/trial.csv" "$scratch/work/my table.csv"

# A function in place of the program shows the words that it gets.
cat >"$scratch/home/.bashrc" <<END
PS1='> '
source '$folder/orvcox'
orvcox() { printf '<%s>' "\$@"; echo; }
bind 'set enable-bracketed-paste off'
bind 'set bell-style none'
bind '"\C-xa": insert-completions'
END
cat >"$scratch/home/.zshrc" <<END
PS1='> '
unset zle_bracketed_paste
unsetopt prompt_cr prompt_sp beep
fpath=('$folder' \$fpath)
autoload -Uz compinit
compinit -u -D
# A completion that inserts all that it finds.
zle -C all-matches complete-word _generic
bindkey '^Xa' all-matches
zstyle ':completion:all-matches::::' completer _all_matches _complete
zstyle ':completion:all-matches:*' insert true
orvcox() { printf '<%s>' "\$@"; echo; }
END
case $shell in
  bash) start="bash --noprofile --rcfile '$scratch/home/.bashrc' -i" ;;
  zsh) start='zsh -d -i' ;;
esac

# The words of a line in a fixed order, one a line.
in_order() { sed 's/^ *<//; s/>$//; s/></\n/g' | LC_ALL=C sort; }

typed=() expected=()
while IFS= read -r line; do
  [[ -z $line || $line == '#'* ]] && continue
  if [[ $line == ' '* ]]; then expected+=("$line"); else typed+=("$line"); fi
done <"$cases"
((${#typed[@]} == ${#expected[@]} && ${#typed[@]} > 0)) || { echo "$cases: lines do not go in pairs"; exit 1; }

keys() {
  local line=$1
  line=${line//'{all}'/$'\x18a'}
  printf '%s\n' "${line//'{tab}'/$'\t'}"
}
(
  cd "$scratch/work"
  { for line in "${typed[@]}"; do keys "$line"; done; echo exit; } |
    env HOME="$scratch/home" ZDOTDIR="$scratch/home" INPUTRC=/dev/null TERM=dumb LC_ALL=C.UTF-8 \
      script -qec "stty cols 2000; exec $start" /dev/null
) >"$scratch/session" || { cat "$scratch/session"; exit 1; }
mapfile -t got < <(tr -d '\r' <"$scratch/session" | grep -a '^<')

failures=0
for ((k = 0; k < ${#typed[@]}; ++k)); do
  if [[ $(in_order <<<"${expected[k]}") != "$(in_order <<<"${got[k]-}")" ]]; then
    printf '%s\n  expected %s\n  got      %s\n' "${typed[k]}" "${expected[k]#  }" "${got[k]-nothing}"
    ((++failures))
  fi
done
echo "$shell: ${#typed[@]} lines, $failures wrong"
((failures == 0))
