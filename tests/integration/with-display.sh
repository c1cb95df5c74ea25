#!/usr/bin/env bash
# Runs a command on a private X display (Xvfb) and a private session bus, in a
# private HOME/XDG tree that the bus (and the services it starts) inherit.
# Usage: with-display.sh COMMAND [ARGS...]
set -euo pipefail
sandbox="$(mktemp -d)"
export HOME="$sandbox" XDG_CONFIG_HOME="$sandbox/.config" XDG_DATA_HOME="$sandbox/.local/share" \
  XDG_CACHE_HOME="$sandbox/.cache" XDG_RUNTIME_DIR="$sandbox/run"
mkdir -p "$XDG_RUNTIME_DIR" "$HOME/Desktop" && chmod 700 "$XDG_RUNTIME_DIR"
for display in $(seq 90 140); do
  [ -e "/tmp/.X11-unix/X$display" ] || [ -e "/tmp/.X$display-lock" ] || break
done
Xvfb ":$display" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null; wait $xvfb 2>/dev/null; rm -rf "$sandbox"' EXIT
for _ in $(seq 100); do [ -e "/tmp/.X11-unix/X$display" ] && break; sleep 0.05; done
export DISPLAY=":$display"
dbus-run-session -- "$@"
