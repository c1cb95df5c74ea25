#!/usr/bin/env bash
# Kills the real tray application with SIGKILL at random moments of a tidy or
# of a "restore --all", with the Desktop and the Shadow Desktop on two tmpfs
# mounts so that every move is a copy, a rename into place and a removal, and
# checks after each kill that the next start (the tray application, or once or
# twice a command) leaves every file exactly once, intact, with no partial copy
# or set-aside item anywhere, and says that it recovered. The kill moments come
# from SEED (replay a run with SEED=N); the verdict never depends on them.
# Needs root for the mounts (skips, exit status 77, without). It stops only the
# processes it started, by their ids. Usage: tidy-kill-recovery.sh BREVANO
set -u
brevano="$1"
here="$(cd "$(dirname "$0")" && pwd)"
rounds=20

if [ "${2:-}" != --on-bus ]; then
  SEED="${SEED:-$((RANDOM << 15 | RANDOM))}"
  echo "seed: $SEED (replay with SEED=$SEED)"
  [[ "$SEED" =~ ^[0-9]+$ ]] || { echo "SEED must be a number"; exit 2; }
  [ "$(id -u)" -eq 0 ] || { echo "SKIP: the two tmpfs mounts need root"; exit 77; }
  for program in python3 dbus-run-session dbus-monitor; do
    command -v "$program" >/dev/null || { echo "SKIP: $program is missing"; exit 77; }
  done
  WORK="$(mktemp -d)"
  mkdir "$WORK/a" "$WORK/b"
  trap 'umount -l "$WORK/a" "$WORK/b" 2>/dev/null; rm -rf "$WORK"' EXIT
  # A: home, Desktop, data file, journal and runtime folder; B: the Shadow Desktop.
  mount -t tmpfs -o size=1g brevano-home "$WORK/a" && mount -t tmpfs -o size=1g brevano-shadow "$WORK/b" ||
    { echo "SKIP: tmpfs cannot be mounted here"; exit 77; }
  export SEED WORK HOME="$WORK/a/home" XDG_CONFIG_HOME="$WORK/a/home/.config" \
    XDG_DATA_HOME="$WORK/a/home/.local/share" XDG_CACHE_HOME="$WORK/a/home/.cache" \
    XDG_RUNTIME_DIR="$WORK/a/run"
  mkdir -p "$HOME/Desktop" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR" \
    "$WORK/b/Shadow Desktop"
  chmod 700 "$XDG_RUNTIME_DIR"
  # What the bus and the services it starts say goes to a file of its own.
  dbus-run-session -- "$0" "$brevano" --on-bus 2>"$WORK/bus.log"
  exit $?
fi

exec 2>&1
source "$here/common.sh"
RANDOM=$SEED
unset DISPLAY WAYLAND_DISPLAY # nothing of this run reaches a real screen
export QT_QPA_PLATFORM=offscreen
desk="$HOME/Desktop"
shadow="$WORK/b/Shadow Desktop"
manifest="$WORK/manifest.json"
log="$XDG_RUNTIME_DIR/brevano-faults.log"
socket="$XDG_RUNTIME_DIR/brevano-$(id -u).socket"
title="Brevano recovered an interrupted tidy"
app="" monitor=""
trap '[ -z "$app$monitor" ] || kill $app $monitor 2>/dev/null' EXIT

# make: the Desktop's items from the seed, and the manifest (path -> sha256).
# state: "DESKTOP SHADOW LEFTOVERS", the manifest's files on each side and the
# partial or set-aside names; check: the same, and it fails (saying why on
# stderr) unless every file is once on one side, whole, and nothing else is.
tree() { # make|state|check
  /usr/bin/python3 - "$1" "$desk" "$shadow" "$manifest" "$SEED" <<'PY'
import hashlib, json, os, random, sys
mode, desk, shadow, manifest, seed = sys.argv[1:]
if mode == "make":
    rng = random.Random(int(seed))
    paths = [f"item {i:04d}.{rng.choice(['txt', 'pdf', 'png', 'odt'])}" for i in range(2000)]
    for j in range(20):
        paths += [f"folder {j:02d}/note {k}.txt" for k in range(rng.randint(2, 4))]
        paths += [f"folder {j:02d}/inner/part {k}.bin" for k in range(rng.randint(1, 3))]
    big = set(rng.sample(paths, 36))
    sums = {}
    for path in paths:
        data = rng.randbytes(rng.randint(1 << 20, 8 << 20) if path in big else rng.randint(0, 4096))
        os.makedirs(os.path.dirname(os.path.join(desk, path)), exist_ok=True)
        with open(os.path.join(desk, path), "wb") as f:
            f.write(data)
        sums[path] = hashlib.sha256(data).hexdigest()
    json.dump(sums, open(manifest, "w"))
    sys.exit(0)
sums = json.load(open(manifest))
problems, found, counts, leftovers = [], {}, [], 0
for root in (desk, shadow):
    folders, holding, present = set(), set(), 0
    for folder, dirs, files in os.walk(root):
        for name in sorted(dirs + files):
            full = os.path.join(folder, name)
            rel = os.path.relpath(full, root)
            if name.startswith((".brevano-partial-", ".brevano-replaced-")):
                leftovers += 1
                problems.append(f"left over: {full}")
            elif name in dirs:
                folders.add(rel)
            elif rel not in sums:
                problems.append(f"not in the manifest: {full}")
            else:
                found.setdefault(rel, []).append(full)
                present += 1
                parts = rel.split("/")
                holding.update("/".join(parts[:i]) for i in range(1, len(parts)))
                if mode == "check" and hashlib.sha256(open(full, "rb").read()).hexdigest() != sums[rel]:
                    problems.append(f"changed: {full}")
        dirs[:] = [d for d in dirs if not d.startswith(".brevano-")]
    problems += [f"a folder with none of the files: {os.path.join(root, f)}" for f in folders - holding]
    counts.append(present)
for rel in sums:
    if len(found.get(rel, [])) != 1:
        problems.append(f"{len(found.get(rel, []))} times: {rel}")
print(counts[0], counts[1], leftovers)
if mode == "check":
    for line in problems[:20]:
        print("  " + line, file=sys.stderr)
    sys.exit(1 if problems else 0)
PY
}
# Answered by the application, so after the recovery of its start. Only asked
# once it listens: a command that finds no one carries itself out, recovering.
answers() { app_listening && "$brevano" status 2>/dev/null | grep -q '^next: Automatic tidy in'; }
start_app() { "$brevano" >>"$log" 2>&1 & app=$!; wait_for answers 600; }
stop_app() { kill -TERM "$app"; wait "$app"; app=""; }
announced() { grep -c "string \"$title\"" "$XDG_RUNTIME_DIR/notify.log"; }
millis() { echo $(($(date +%s%N) / 1000000)); }
settled() { # every file once and whole, nothing else; d0 s0 are the counts
  local counts status
  counts="$(tree check)"; status=$?
  read -r d0 s0 _ <<<"$counts"
  echo "  now: Desktop $d0, Shadow Desktop $s0"
  return $status
}

tree make
find "$desk" -mindepth 1 -exec touch -d '1 hour ago' {} + # none is still being written
"$brevano" set ShadowDesktopPath "$shadow" >/dev/null &&
  "$brevano" set ShowWelcome2.0 false >/dev/null || { echo "FAIL: brevano set"; exit 1; }
dbus-monitor --session "interface='org.freedesktop.Notifications',member='Notify'" \
  >"$XDG_RUNTIME_DIR/notify.log" 2>&1 &
monitor=$!
wait_for "[ -s '$XDG_RUNTIME_DIR/notify.log' ]"
check "the tray application starts offscreen and answers" start_app
[ "$failures" -eq 0 ] || exit 1

# How long a whole run takes, for the spread of the kill moments only.
start=$(millis); "$brevano" tidy >/dev/null; t_tidy=$(($(millis) - start))
read -r d s _ < <(tree state)
start=$(millis); "$brevano" restore --all >/dev/null; t_restore=$(($(millis) - start))
check "an uninterrupted tidy moves everything (${t_tidy} ms), and restore --all brings it back (${t_restore} ms)" \
  '[ "$d" = 0 ] && settled && [ "$s0" = 0 ]'

by_command=0 by_app=0
for round in $(seq "$rounds"); do
  [ -n "$app" ] || start_app || { check "round $round: the tray application starts" false; break; }
  if [ "$d0" -gt 0 ]; then op=tidy span=$t_tidy; else op="restore --all" span=$t_restore; fi
  delay=$(((RANDOM << 15 | RANDOM) % (span + 1)))
  "$brevano" $op >/dev/null 2>&1 &
  client=$!
  sleep "$((delay / 1000)).$(printf %03d $((delay % 1000)))"
  # The command first: one whose application dies carries it out itself.
  kill -KILL "$client" "$app" 2>/dev/null
  { wait "$client"; client_status=$?; wait "$app"; } 2>/dev/null
  app=""
  rm -f "$socket" # the killed application's, as the next start would remove it
  read -r d s left < <(tree state)
  # Cut short in the middle of the run: the command had no answer yet, and
  # something moved but not everything, or a partial copy is left.
  [ "$op" = tidy ] && source_side=$d || source_side=$s
  cut_short=false
  [ "$client_status" = 137 ] && { [ "$left" -gt 0 ] ||
    { [ "$d $s" != "$d0 $s0" ] && [ "$source_side" -gt 0 ]; }; } && cut_short=true
  echo "round $round: $op killed after $delay of $span ms: Desktop $d, Shadow Desktop $s," \
    "$left partial or set aside$($cut_short && echo ", cut short")"
  if $cut_short && [ "$by_command" -lt 2 ] && [ "$by_command" -le "$by_app" ]; then
    echo "  recovered by a command, with no application running"
    "$brevano" list >/dev/null 2>"$XDG_RUNTIME_DIR/command.err"
    sed 's/^/  stderr: /' "$XDG_RUNTIME_DIR/command.err"
    check "round $round: a command run after the kill prints one line \"$title: ...\"" \
      '[ "$(grep -c "^$title: " "$XDG_RUNTIME_DIR/command.err")" = 1 ]'
    by_command=$((by_command + 1))
  else
    echo "  recovered by the tray application"
    before=$(announced)
    start_app || { check "round $round: the tray application starts again" false; break; }
    if $cut_short; then
      check "round $round: its start notifies \"$title\"" 'wait_for "[ \$(announced) -gt $before ]"'
      by_app=$((by_app + 1))
    fi
  fi
  check "round $round: every file once, whole, and nothing left over" settled
done

[ -z "$app" ] || stop_app
check "after a final start: every file once, whole, and nothing left over" 'start_app && settled'
stop_app
kill "$monitor"; wait "$monitor" 2>/dev/null; monitor=""
check "starts of the tray application recovered runs cut short ($by_app times)" '[ "$by_app" -gt 0 ]'
check "a command recovered a run cut short ($by_command times)" '[ "$by_command" -gt 0 ]'
# The offscreen platform's own remarks: it has no tray and sizes no window.
check "Brevano's log holds no Qt warning or error" \
  '! qt_warnings | grep -v -e "does not support propagateSizeHints" -e "No such signal .*systemTrayWindowChanged"'
echo "$passes passed, $failures failed in $SECONDS s"
[ "$failures" -eq 0 ] || exit 1
