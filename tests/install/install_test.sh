#!/usr/bin/env bash
# Installs the build into a temporary prefix and runs the installed programs:
# --version and --help against their manual pages, the desktop entries and
# metadata (where the validators are installed), a start that logs into the
# user's state folder, and a batch page generation on a machine PC whose
# Program/Tools is the installed bin folder.
#   tests/install/install_test.sh BUILD_DIR SOURCE_DIR VERSION
set -euo pipefail
BUILD="$1" SOURCE="$2" VERSION="$3"
TMP="$(mktemp -d)"
trap 'rm -rf "$TMP"' EXIT
P="$TMP/prefix"
fail() { echo "FAILED: $*" >&2; exit 1; }

cmake --install "$BUILD" --prefix "$P" >/dev/null
export QT_QPA_PLATFORM=offscreen HOME="$TMP/home" XDG_CONFIG_HOME="$TMP/config" XDG_STATE_HOME="$TMP/state"
unset HELPTEXT_MACHINE_ROOT

for p in helptext-editor helptext-importer helptext-mkdb helptext-mkjet; do
  [ "$("$P/bin/$p" --version)" = "$p $VERSION" ] || fail "$p --version: $("$P/bin/$p" --version)"
  grep -q "^\.TH ${p^^} 1 .*helptext $VERSION" "$P/share/man/man1/$p.1" || fail "no manual page for $p"
done
help="$("$P/bin/helptext-importer" --help)"
commands="$(printf '%s\n' "$help" | sed -n 's/^  helptext-importer \([a-z-]*\) .*/\1/p')"
[ "$(printf '%s\n' "$commands" | wc -l)" -ge 5 ] || fail "helptext-importer --help lists no commands: $help"
grep -q '^\.SH "COMMANDS"' "$P/share/man/man1/helptext-importer.1" || fail "manual page lacks its COMMANDS section"
for c in $commands; do
  grep -q "^\.SS \"$c\"" "$P/share/man/man1/helptext-importer.1" || fail "manual page lacks the command $c"
done
for f in applications/helptext-editor.desktop applications/helptext-importer.desktop \
  icons/hicolor/scalable/apps/helptext.svg icons/hicolor/48x48/apps/helptext.png \
  helptext/HelpTextMitMaterialchange.mdb helptext/HelpTextOhneMaterialchange.mdb \
  helptext/templates/Source_Alarms.html doc/helptext/README.md; do
  [ -s "$P/share/$f" ] || fail "not installed: share/$f"
done
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$P"/share/applications/*.desktop | grep -v ': hint: ' || true
  desktop-file-validate "$P"/share/applications/*.desktop | grep -qv ': hint: ' && fail "desktop entries"
fi
if command -v appstreamcli >/dev/null; then
  appstreamcli validate --no-net "$P"/share/metainfo/*.metainfo.xml >/dev/null || fail "AppStream metadata"
fi

# Elsewhere than on the machine PC the installed program logs into the state
# folder, never into its own bin folder (writable here, as root runs the tests).
status=0
out="$("$P/bin/helptext-editor" /html 2>&1)" || status=$?
log="$XDG_STATE_HOME/helptext/helptext-editorError.log"
[ "$status" != 0 ] || fail "a start without any databases succeeded"
[ -s "$log" ] || fail "no error log in $log: $out"
[ ! -e "$P/bin/helptext-editorError.log" ] || fail "the installed program logged into its bin folder"
[ "$(printf '%s\n' "$out" | grep -c "the error log is $log")" = 1 ] || fail "not said once where the log is: $out"

# The machine PC: <root>/Program/Tools is the installed bin folder.
ROOT="$TMP/Scopia"
mkdir -p "$ROOT/Program/Help"
ln -s "$P/bin" "$ROOT/Program/Tools"
S="$P/share/helptext/schema" D="$SOURCE/samples/demo"
"$P/bin/helptext-mkdb" "$ROOT/Program/Helptext.mdb" "$S/helptext.sql" "$S/helptext_materialchange.sql" \
  "$D/helptext_demo.sql"
"$P/bin/helptext-mkdb" "$ROOT/Program/Scopia.mdb" "$S/indextext.sql" "$D/indextext_demo.sql"
"$P/bin/helptext-mkdb" "$ROOT/Program/Tools/Languages.mdb" "$S/languages.sql" "$D/languages_demo.sql"
cp "$P"/share/helptext/templates/Source_*.html "$ROOT/Program/Help/"
printf '[Setup]\r\nScreenResolution=1024\r\n' > "$ROOT/Program/Tools/helptext-editor.ini"
status=0
HELPTEXT_MACHINE_ROOT="$ROOT" "$P/bin/helptext-editor" /html/Alarms/Warnings/MaterialChange || status=$?
pages="$(find "$ROOT/Program/Help" -name '*.html' ! -name 'Source_*' | wc -l)"
[ "$status" = 0 ] || fail "batch run: exit code $status; $(cat "$ROOT/Program/Tools/helptext-editorError.log" 2>/dev/null)"
[ "$pages" -gt 0 ] || fail "batch run wrote no pages"
echo "installed into $P: $(find "$P" -type f | wc -l) files; batch run wrote $pages pages"
