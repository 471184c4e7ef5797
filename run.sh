#!/usr/bin/env bash
# Sets everything up and runs the demo:
#   installs missing packages, builds, creates the demo workspace demo/ from
#   samples/ and starts the editor on it. Without a display it runs the batch
#   page generation of the machine PC on the demo data instead.
# Options: --fresh (rebuild demo/ from scratch), --importer (start the importer),
#          --batch (run the batch page generation even with a display),
#          --no-build (use what is already built; HELPTEXT_BUILD_DIR, default build/).
set -euo pipefail
cd "$(dirname "$0")"
ROOT="$(pwd)"

FRESH=0 VARIANT=helptext-editor BATCH=0 BUILD=1
for arg in "$@"; do
  case "$arg" in
    --fresh) FRESH=1 ;;
    --importer) VARIANT=helptext-importer ;;
    --batch) BATCH=1 ;;
    --no-build) BUILD=0 ;;
    *) echo "usage: $0 [--fresh] [--importer] [--batch] [--no-build]" >&2; exit 2 ;;
  esac
done
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then BATCH=1; fi

if [ "$BUILD" = 1 ]; then
  scripts/install-deps.sh
  # Only what the demo needs; ./test.sh builds the tests and benchmarks.
  scripts/build.sh helptext-editor helptext-importer helptext-mkdb helptext-mkjet helptext_templates
fi

DEMO="$ROOT/demo"
BIN="$(cd "${HELPTEXT_BUILD_DIR:-$ROOT/build}" && pwd)/bin"
if [ "$FRESH" = 1 ]; then rm -rf "$DEMO"; fi
scripts/make-demo.sh "$DEMO" "$BIN"

if [ "$BATCH" = 0 ]; then
  # Workstation mode on the demo data; the user's own settings stay untouched.
  echo "Starting $VARIANT on the demo data (settings: $DEMO/config/$VARIANT.ini)"
  exec env XDG_CONFIG_HOME="$DEMO/config" "$BIN/$VARIANT"
fi

# No display: the machine PC's unattended batch run, in a machine tree of its own.
MACHINE="$DEMO/Scopia"
rm -rf "$MACHINE"
mkdir -p "$MACHINE/Program/Tools" "$MACHINE/Program/Help"
cp "$BIN/helptext-editor" "$BIN/helptext-importer" "$MACHINE/Program/Tools/"
cp "$DEMO/databases/Helptext.mdb" "$DEMO/databases/Scopia.mdb" "$MACHINE/Program/"
cp "$DEMO/databases/Languages.mdb" "$MACHINE/Program/Tools/"
cp "$ROOT"/samples/templates/Source_*.html "$MACHINE/Program/Help/"
# Without a display the settings file tells the panel's width.
printf '[Setup]\r\nScreenResolution=1024\r\n' > "$MACHINE/Program/Tools/helptext-editor.ini"

echo "Generating the help pages of the demo machines (batch run on the machine PC)..."
status=0
HELPTEXT_MACHINE_ROOT="$MACHINE" "$MACHINE/Program/Tools/helptext-editor" /html/Alarms/Warnings/MaterialChange || status=$?
LOG="$MACHINE/Program/Tools/helptext-editorError.log"
if [ -s "$LOG" ]; then
  echo "Error log ($LOG):"
  cat "$LOG"
fi
echo "Exit code: $status"
echo "Pages written below $MACHINE/Program/Help/:"
(cd "$MACHINE/Program/Help" && find . -name '*.html' ! -name 'Source_*' | sort | sed 's|^\./|  |')
exit "$status"
