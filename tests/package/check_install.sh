#!/usr/bin/env bash
# Installs the build into a throw-away prefix and asks the desktop's own tools what they make of it:
# the launcher and the software centre's description are valid, a .vlk file is a Veltrick timesheet
# and Veltrick opens it, every icon is there at its size, and the installed layout under share/ is the
# build tree's, from which the program finds its style sheet and manual.
# check_install.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

cmake --install "$build" --prefix "$prefix" > "$work/install.log"

# Everything the build lays out under share/ is installed at the same place.
while IFS= read -r file; do
  [ -f "$prefix/share/$file" ] || fail "share/$file is in the build tree but not installed"
done < <(cd "$build/share" && find . -type f | sed 's|^\./||')

for file in bin/veltrick bin/veltrick-cli share/veltrick/styleSheet.txt share/applications/veltrick.desktop \
            share/mime/packages/veltrick.xml share/metainfo/org.veltrick.Veltrick.metainfo.xml \
            share/man/man1/veltrick-cli.1.gz share/doc/veltrick/manual.html; do
  [ -s "$prefix/$file" ] || fail "$file is not installed"
done

# The icons: one drawing and a PNG of each size, for the program and for its files.
png_size() { od -An -t u1 -j 16 -N 8 "$1" | awk '{ printf "%dx%d", $3 * 256 + $4, $7 * 256 + $8 }'; }
for icon in apps/veltrick mimetypes/application-x-veltrick-timesheet; do
  [ -s "$prefix/share/icons/hicolor/scalable/$icon.svg" ] || fail "scalable $icon.svg missing"
  for size in 16 22 24 32 48 64 128 256; do
    png=$prefix/share/icons/hicolor/${size}x${size}/$icon.png
    if [ ! -s "$png" ]; then fail "$png missing"; continue; fi
    [ "$(png_size "$png")" = "${size}x${size}" ] || fail "$png is $(png_size "$png"), not ${size}x${size}"
  done
done

desktop-file-validate "$prefix/share/applications/veltrick.desktop" || fail "desktop-file-validate"
grep -qx 'Icon=veltrick' "$prefix/share/applications/veltrick.desktop" || fail "the launcher's icon is not veltrick"
appstreamcli validate --no-net "$prefix/share/metainfo/org.veltrick.Veltrick.metainfo.xml" ||
  fail "appstreamcli validate (without screenshots)"
# The description a packager publishes with a web folder of the screenshots.
cmake -DTEMPLATE="$source/resources/veltrick.metainfo.xml.in" -DOUT="$work/shots.metainfo.xml" \
      -DAPP_ID=org.veltrick.Veltrick -DVERSION=8.0 -DSCREENSHOT_URL=https://example.org/veltrick/docs \
      -P "$source/cmake/metainfo.cmake"
[ "$(grep -c '<screenshot' "$work/shots.metainfo.xml")" = 6 ] || fail "five screenshots expected"
for shot in $(grep -o 'docs/[a-z-]*\.png' "$work/shots.metainfo.xml"); do
  [ -f "$source/$shot" ] || fail "screenshot $shot is not in the source tree"
done
appstreamcli validate --no-net "$work/shots.metainfo.xml" || fail "appstreamcli validate (with screenshots)"

# The desktop as a file manager sees it: the type from the name, and the program that opens it.
mkdir -p "$work/home" "$work/files"
: > "$work/files/x.vlk"
export HOME=$work/home XDG_DATA_HOME=$work/home/.local/share XDG_CONFIG_HOME=$work/home/.config
export XDG_DATA_DIRS=$prefix/share XDG_CONFIG_DIRS=$work/home/etc
unset XDG_CURRENT_DESKTOP DESKTOP_SESSION KDE_FULL_SESSION GNOME_DESKTOP_SESSION_ID
update-mime-database "$prefix/share/mime"
update-desktop-database "$prefix/share/applications"
type=$(xdg-mime query filetype "$work/files/x.vlk")
[ "$type" = application/x-veltrick-timesheet ] || fail "xdg-mime gives \"$type\" for x.vlk"
app=$(xdg-mime query default application/x-veltrick-timesheet)
[ "$app" = veltrick.desktop ] || fail "xdg-mime gives \"$app\" as the program for timesheets"
grep -q 'application-x-veltrick-timesheet' "$prefix/share/mime/generic-icons" "$prefix/share/mime/icons" 2>/dev/null ||
  fail "the timesheet type has no icon in the MIME database"

# Every picture of the manual is installed beside it.
while IFS= read -r picture; do
  [ -f "$prefix/share/doc/veltrick/$picture" ] || fail "the manual shows $picture, which is not installed"
done < <(grep -o '<img src="[^"]*"' "$prefix/share/doc/veltrick/manual.html" | sed 's/<img src="//; s/"$//')
[ "$(grep -c '<img ' "$prefix/share/doc/veltrick/manual.html")" -ge 5 ] || fail "the manual has fewer than five pictures"

"$prefix/bin/veltrick-cli" --help | grep -q '^Usage: veltrick-cli' || fail "veltrick-cli --help"
zcat "$prefix/share/man/man1/veltrick-cli.1.gz" | grep -q '^\.TH VELTRICK-CLI 1' || fail "the man page has no title"

[ "$failures" = 0 ] || { echo "$failures failures"; exit 1; }
echo "installed layout checked in $prefix"
