# Completion of the qor program for bash. The program itself knows its names.
_qor() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} words
  COMPREPLY=()
  if [[ $COMP_CWORD == 1 ]]; then
    words="$(qor help | sed -n 's/^  \([a-z-]*\) .*/\1/p')"
  elif [[ $before == --engine ]]; then
    words="$(qor engines --names)"
  elif [[ $before == --dist ]]; then
    words="$(qor random --help | sed -n 's/^  \([a-z]*\)[: ].* - .*/\1/p')"
  elif [[ $before == --accuracy ]]; then
    words="high low"
  elif [[ $before == --method ]]; then
    words="auto direct fourier"
  elif [[ $before == --scale ]]; then
    words="inverse forward both none"
  elif [[ $word == -* ]]; then
    words="$(qor "$command" --help | sed -n 's/^  \(-[-a-z]*\).*/\1/p')"
  elif [[ $command == math && $COMP_CWORD == 2 ]]; then
    words="$(qor math --list)"
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
    return
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
} 2>/dev/null
complete -o filenames -F _qor qor
