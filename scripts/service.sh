# shellcheck shell=bash
# Sourced by scripts that start a service.

# wait_for PROCESS COMMAND...: runs COMMAND every 10 ms until it succeeds. Fails, and says so, when
# PROCESS has ended before, or after 20 seconds.
wait_for() {
  local process=$1 end=$((SECONDS + 20))
  shift
  until "$@" >/dev/null 2>&1; do
    if ! kill -0 "$process" 2>/dev/null; then
      echo "process $process ended before this succeeded: $*" >&2
      return 1
    fi
    if [ $SECONDS -ge $end ]; then
      echo "this did not succeed within 20 seconds: $*" >&2
      return 1
    fi
    sleep 0.01
  done
}

# service_answers CLIENT...: whether the client, run by these words, finds a service. The client
# connects before it refuses the command, so the service gets no request.
service_answers() {
  local status=0
  timeout 20 "$@" sarvik - >/dev/null 2>&1 || status=$?
  [ "$status" = 4 ]
}
