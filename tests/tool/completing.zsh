# Makes an interactive zsh tell what it would offer.
fpath=($1 $fpath)
cd $2
PROMPT=
autoload -Uz compinit
compinit -D -u
bindkey '^I' complete-word
zstyle ':completion:*' insert-tab false

compadd() {
  if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then
    builtin compadd "$@"
    return
  fi
  local -a hits
  local suffix=
  builtin compadd -O hits "$@"
  ((! $@[(I)-S])) || suffix=$@[$@[(I)-S]+1]
  ((! $#hits)) || print -rl -- '' '<offer>'$IPREFIX${^hits}$suffix
  builtin compadd "$@"
}
tell_end() { print -r -- $'\n<done>' }
comppostfuncs=(tell_end)
print '<ready>'
