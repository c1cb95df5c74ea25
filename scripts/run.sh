#!/usr/bin/env bash
# Starts Brevano. The tray application comes in a later build; until then this
# shows where Brevano keeps its files and what the command line can do.
set -euo pipefail
brevano="$1"
"$brevano" paths
echo
exec "$brevano" --help
