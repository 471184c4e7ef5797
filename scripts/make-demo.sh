#!/usr/bin/env bash
# Creates the demo workspace (default demo/) from samples/ unless it exists:
#   databases/Helptext.mdb   help-text database: machines CT400 and FL220,
#                            languages English, Deutsch, Greek, Russian
#   databases/Languages.mdb  language-definition database
#   databases/Scopia.mdb     index-text database (resolves Feeder.Motor.Speed)
#   help/                    help main directory with the three page templates
#   config/*.ini             settings of both variants pointing at the above
# The three databases are Access (Jet 4) files, as a machine has them: made by
# helptext-mkjet from SQLite sources (the schema scripts and samples/demo/*.sql)
# and the Access-made empty file src/database/schema/empty.mdb.
# Usage: scripts/make-demo.sh [demo-dir] [bin-dir]
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
DEMO="${1:-$ROOT/demo}"
BIN="${2:-$ROOT/build/bin}"
MKDB="$BIN/helptext-mkdb"
MKJET="$BIN/helptext-mkjet"
SCHEMA="$ROOT/src/database/schema"
SAMPLES="$ROOT/samples/demo"

if [ -f "$DEMO/databases/Helptext.mdb" ]; then
  echo "Demo workspace $DEMO exists (use --fresh to rebuild it)."
  exit 0
fi
mkdir -p "$DEMO/databases" "$DEMO/help" "$DEMO/config"
rm -f "$DEMO"/databases/*.mdb
SOURCES="$(mktemp -d)"
trap 'rm -rf "$SOURCES"' EXIT
# access NAME SCRIPT...: the SQLite database of the scripts, written out as the Access file NAME.
access() {
  local name="$1"
  shift
  "$MKDB" "$SOURCES/$name.sqlite" "$@"
  "$MKJET" "$DEMO/databases/$name.mdb" "$SCHEMA/empty.mdb" "$SOURCES/$name.sqlite"
}
access Helptext "$SCHEMA/helptext.sql" "$SCHEMA/helptext_materialchange.sql" "$SAMPLES/helptext_demo.sql"
access Languages "$SCHEMA/languages.sql" "$SAMPLES/languages_demo.sql"
access Scopia "$SCHEMA/indextext.sql" "$SAMPLES/indextext_demo.sql"
cp "$ROOT"/samples/templates/Source_*.html "$DEMO/help/"

for variant in helptext-editor helptext-importer; do
  cat > "$DEMO/config/$variant.ini" <<INI
[Setup]
StandardHelpTextDB=$DEMO/databases/Helptext.mdb
StandardLangLookupDB=$DEMO/databases/Languages.mdb
StandardIndexTextDB=$DEMO/databases/Scopia.mdb
HelpMainDir=$DEMO/help/
ScreenResolution=1024
GenerateHTMLAfterEditAlarm=true
GenerateHTMLAfterEditWarnings=true
GenerateHTMLAfterEditMaterialChange=true
[Defaults]
Item=1
Index=1
Machine=CT400
LanguageDestination=Deutsch
INI
done
echo "Demo workspace created in $DEMO"
