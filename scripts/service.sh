# shellcheck shell=bash
# Sourced by scripts that start the stand-in service. It and the program are taken from PATH.

# Whether the program can connect to a service: its status is 0 if it cannot. It connects before it
# refuses the command "-", so the service gets no request. Any other failure also ends the waiting.
service_answers() { ! timeout 20 qordex sarvik - >/dev/null 2>&1; }

# start_service FOLDER: starts the service with the replies in FOLDER and waits until it answers.
start_service() {
  qordex-demo-service "$1" &
  service=$!
  until service_answers; do
    kill -0 "$service" 2>/dev/null || return 1  # it has ended
    sleep 0.01
  done
}

# Ends the service if it has been started. Never fails.
end_service() {
  [ -z "${service-}" ] || kill "$service" 2>/dev/null || true
}
