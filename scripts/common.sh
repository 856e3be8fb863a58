# shellcheck shell=bash
# Sourced first by the scripts here and by .ci/run: help, errors and a lock. The help is the
# script's header comment, whose last lines are the usage. Sets `script` to its path without links.

script=$(realpath "$0")

print_help() { sed -n '1d; /^#/!q; s/^# \?//p' "$script"; }

fail() {
  echo "${script##*/}: $*" >&2
  exit 1
}

# Says what is wrong with the command line.
usage_error() {
  echo "${script##*/}: $*" >&2
  print_help | sed -n '/^usage:/,$p' >&2
  exit 2
}

# require_choice NAME VALUE CHOICE...: fails unless VALUE, given for NAME of the usage, is a CHOICE.
require_choice() {
  local name=$1 value=$2 choice
  shift 2
  for choice; do [ "$value" != "$choice" ] || return 0; done
  usage_error "$name is one of $*${value:+, not \"$value\"}"
}

# refuse_option WORD: fails when WORD begins with a hyphen.
refuse_option() { [[ $1 != -* ]] || usage_error "unexpected option \"$1\""; }

# lock FOLDER: waits until no other script holds FOLDER, and holds it until this one ends.
lock() {
  local descriptor
  exec {descriptor}<"$1"
  if ! flock --nonblock "$descriptor"; then
    echo "${script##*/}: waiting for another to finish with $1" >&2
    flock "$descriptor"
  fi
}

case ${1-} in
  -h | --help)
    print_help
    exit
    ;;
esac
