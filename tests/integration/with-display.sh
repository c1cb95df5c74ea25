#!/usr/bin/env bash
# Runs a command on a private X display (Xvfb) and a private session bus, in a
# private HOME/XDG tree that the bus (and the services it starts) inherit.
# Usage: with-display.sh COMMAND [ARGS...]
set -euo pipefail
sandbox="$(mktemp -d)"
export HOME="$sandbox" XDG_CONFIG_HOME="$sandbox/.config" XDG_DATA_HOME="$sandbox/.local/share" \
  XDG_CACHE_HOME="$sandbox/.cache" XDG_RUNTIME_DIR="$sandbox/run"
mkdir -p "$XDG_RUNTIME_DIR" "$HOME/Desktop" && chmod 700 "$XDG_RUNTIME_DIR"
source "$(dirname "$0")/../../scripts/xvfb.sh"
start_xvfb
trap 'kill $XVFB_PID 2>/dev/null; wait $XVFB_PID 2>/dev/null; rm -rf "$sandbox"' EXIT
dbus-run-session -- "$@"
