# What zsh offers for a command line, one word a line: complete.zsh FOLDER WHERE LINE. FOLDER has the file of the
# completion, WHERE is the folder that the shell is in.
#
# An interactive zsh, on a terminal of its own, is asked by a tabulator. Its compadd tells what it is given.
zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell "source ${0:h}/completing.zsh ${(q)1} ${(q)2}"
zpty -r shell output '*<ready>*'
zpty -n -w shell "$3"$'\t'
zpty -r shell output '*<done>*'
zpty -d shell
for line in ${(f)${output//$'\r'/}}; do
  [[ $line != '<offer>'* ]] || print -r -- "${line#<offer>}"
done
