#!/usr/bin/env bash
# run_with_panel.sh PANEL COMMAND [ARGUMENT...]: starts the test panel, runs the command with the
# panel's ports in its environment, and ends the panel. Fails when either of them does.
set -euo pipefail
panel=$1
shift

coproc PANEL { exec "$panel"; }
pid=$PANEL_PID
input=${PANEL[1]}
trap 'kill "$pid" 2>/dev/null || true' EXIT

until [ "${line-}" = ready ]; do
  read -r -t 60 line <&"${PANEL[0]}"
  [ "$line" = ready ] || export "${line?}"
done

status=0
"$@" || status=$?

exec {input}>&-  # the panel ends with its input
wait "$pid" || { echo "the test panel failed" >&2; status=1; }
exit "$status"
