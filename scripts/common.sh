# shellcheck shell=bash
# Sourced first by the other scripts here, for their help and their errors. The help is a script's
# header comment, which ends with the usage. Sets `script` to the script's path without links.

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
