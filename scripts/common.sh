# shellcheck shell=bash
# Sourced first by the scripts here and by .ci/run: help and errors. The help is the script's header
# comment, whose last lines are the usage. Sets `script` to its path without links.

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

if [ "${1-}" = -h ] || [ "${1-}" = --help ]; then
  print_help
  exit
fi
