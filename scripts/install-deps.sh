#!/usr/bin/env bash
# Installs the Debian packages a target needs, only those missing; does nothing
# when all are there. Usage: install-deps.sh build|test|fuzz|bench|run
set -euo pipefail

build=(cmake ninja-build g++ make pkg-config qt6-base-dev qt6-svg-dev zlib1g-dev)
test=(libplist-dev python3 tzdata dbus xvfb xauth dunst xfce4-panel trayer xdotool imagemagick libglib2.0-bin
      at-spi2-core python3-pyatspi adwaita-icon-theme x11-utils tumbler xfdesktop4 thunar)
fuzz=(clang libclang-rt-14-dev)
bench=(libplist-utils hyperfine time)
# A virtual display with a tray host and a notification server, for make run
# on a machine without a display.
run=(xvfb xauth xfce4-panel dunst imagemagick dbus libglib2.0-bin adwaita-icon-theme xdotool)

wanted=("${build[@]}")
for target in "$@"; do
  case "$target" in
    build) ;;
    test) wanted+=("${test[@]}") ;;
    fuzz) wanted+=("${fuzz[@]}") ;;
    bench) wanted+=("${test[@]}" "${bench[@]}") ;;
    run) [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] || wanted+=("${run[@]}") ;;
    *) echo "install-deps: unknown target $target" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${wanted[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null; then
  echo "install-deps: missing ${missing[*]}, and there is no apt-get to install them" >&2
  exit 1
fi
sudo=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "install-deps: run as root to install ${missing[*]}" >&2; exit 1; }
  sudo=(sudo)
fi
echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
