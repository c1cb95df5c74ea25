# Sourced: start_xvfb starts Xvfb on a display of its own choosing (so that two
# callers at once never pick the same one), exports DISPLAY and sets XVFB_PID;
# the caller stops it.
start_xvfb() {
  local number_file
  number_file="$(mktemp)"
  Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$number_file" >/dev/null 2>&1 &
  XVFB_PID=$!
  for _ in $(seq 200); do [ -s "$number_file" ] && break; sleep 0.05; done
  export DISPLAY=":$(tr -d '[:space:]' < "$number_file")"
  rm -f "$number_file"
}
