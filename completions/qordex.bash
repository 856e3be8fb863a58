# shellcheck shell=bash
# Completion of qordex for bash: the modules, the commands of the module with their short names, and
# file names after a command.

_qordex() {
  local words=
  case $COMP_CWORD:${COMP_WORDS[1]} in
    1:*) words="sarvik -help --help" ;;
    2:sarvik) words="--help --h --inject --i --signal --s" ;;
    2:*) ;;
    *) compopt -o bashdefault -o default ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _qordex qordex
