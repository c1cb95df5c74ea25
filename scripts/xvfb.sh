# Sourced: start_xvfb starts Xvfb on a free display, exports DISPLAY and sets
# XVFB_PID; the caller stops it.
start_xvfb() {
  local display
  for display in $(seq 60 140); do
    [ -e "/tmp/.X11-unix/X$display" ] || [ -e "/tmp/.X$display-lock" ] || break
  done
  Xvfb ":$display" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
  XVFB_PID=$!
  for _ in $(seq 100); do [ -e "/tmp/.X11-unix/X$display" ] && break; sleep 0.05; done
  export DISPLAY=":$display"
}
