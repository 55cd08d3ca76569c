#!/usr/bin/env bash
# Installs the built package with apt, as a user would, on this machine or in a Debian root folder
# (a chroot made by debootstrap), and checks it: veltrick-cli runs, the program shows its window on an
# X server, the desktop's caches learned the timesheet type; then removes it and checks that none of
# its files, and nothing of it in those caches, is left.
# check_deb.sh BUILD_DIR [DEBIAN_ROOT]
set -euo pipefail
build=$1
root=${2:-}
deb=$(ls -t "$build"/veltrick_*.deb | head -1)
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

if [ -n "$root" ]; then
  cp /etc/resolv.conf "$root/etc/resolv.conf"
  mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
  trap 'umount "$root/proc" 2>/dev/null || true' EXIT
  in_root() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 "$@"; }
  in_root apt-get update -qq
  in_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq xvfb xauth xdotool x11-utils > /dev/null
else
  in_root() { "$@"; }
fi
cp "$deb" "$root/tmp/veltrick.deb"
echo "package: $(basename "$deb")"
dpkg-deb --field "$deb" Depends Recommends

mapfile -t files < <(dpkg-deb --fsys-tarfile "$deb" | tar -t | sed 's|^\./|/|' | grep -v '/$')
in_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq /tmp/veltrick.deb > /dev/null
for file in "${files[@]}"; do
  [ -e "$root$file" ] || fail "$file was not installed"
done

in_root veltrick-cli --help | grep -q '^Usage: veltrick-cli' || fail "veltrick-cli --help"
# The triggers of shared-mime-info and desktop-file-utils ran on our files.
[ -f "$root/usr/share/mime/application/x-veltrick-timesheet.xml" ] || fail "the MIME cache does not know .vlk"
grep -q 'application/x-veltrick-timesheet=veltrick.desktop' "$root/usr/share/applications/mimeinfo.cache" ||
  fail "the desktop database does not open timesheets with Veltrick"

# The program starts on an X server and maps its window with the window icon set.
in_root sh -c 'export XDG_RUNTIME_DIR=$(mktemp -d) && xvfb-run -a sh -c "
  veltrick & pid=\$!
  window=\$(timeout 20 xdotool search --sync --onlyvisible --name \"^Veltrick\$\" | head -1)
  xprop -id \"\$window\" _NET_WM_ICON | grep -q \"Icon (128 x 128)\"; found=\$?
  kill \$pid; wait \$pid 2> /dev/null; exit \$found"' || fail "the program did not show its window with its icon"

in_root env DEBIAN_FRONTEND=noninteractive apt-get remove -y -qq veltrick > /dev/null
for file in "${files[@]}"; do
  [ ! -e "$root$file" ] || fail "$file is left after removal"
done
left=$(find "$root/usr" "$root/etc" "$root/var/lib/dpkg/info" -iname '*veltrick*' 2> /dev/null || true)
[ -z "$left" ] || fail "left behind: $left"
[ ! -e "$root/usr/share/mime/application/x-veltrick-timesheet.xml" ] || fail "the MIME cache still knows .vlk"
! grep -q veltrick "$root/usr/share/applications/mimeinfo.cache" 2> /dev/null ||
  fail "the desktop database still names Veltrick"
rm -f "$root/tmp/veltrick.deb"

[ "$failures" = 0 ] || { echo "$failures failures"; exit 1; }
echo "installed, started and removed ${#files[@]} files cleanly${root:+ in $root}"
