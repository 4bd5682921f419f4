#!/usr/bin/env bash
# inkdot installed as a user installs it: builds the Debian packages with
# CPack (libinkdot0, libinkdot-dev, inkdot, printer-driver-inkdot), installs
# them with apt, builds the examples against the installed
# library (print_image through pkg-config, lut_summary through find_package)
# and runs them, tries the installed command, then prints a PDF through a
# private CUPS scheduler (loopback, port $INKDOT_PACKAGE_CUPS_PORT, default
# 8632) whose filters and drivers are the system's own directories: the PDF
# goes through cups-filters and Ghostscript to the installed rastertoinkdot,
# and the raster that comes out is checked. Last, the packages are removed
# and none of their files may remain. The machine's own scheduler is not
# touched.
#
#   scripts/test-package.sh
#   INKDOT_PACKAGE_KEEP=1 ...     keep the work directory and leave the packages installed
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
start_all=$SECONDS

scripts/deps.sh
# cups brings cups-driverd, which answers `lpinfo -m`; cups-ppdc compiles the PPD.
scripts/install-packages.sh dpkg-dev file cups cups-daemon cups-client cups-filters cups-ppdc ghostscript \
  python3-matplotlib python3-numpy
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO=sudo
# Under pipefail a `grep -q` that stops reading early can fail its writer
# with SIGPIPE: pipelines below give grep all of it (grep >/dev/null).

packages=(libinkdot0 libinkdot-dev inkdot printer-driver-inkdot)
for p in "${packages[@]}"; do
  if dpkg -s "$p" >/dev/null 2>&1; then
    echo "$p is installed already; remove it first (apt-get remove ${packages[*]})" >&2
    exit 1
  fi
done

echo "--- building the packages"
build=build/package
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DINKDOT_BUILD_TESTS=OFF "${launcher[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"
rm -f "$build"/*.deb
(cd "$build" && cpack -G DEB >/dev/null)
debs=()
for p in "${packages[@]}"; do
  deb=$(ls "$root/$build/${p}_"*.deb)
  debs+=("$deb")
  echo "$(basename "$deb"): $(stat -c %s "$deb") bytes"
  dpkg-deb --field "$deb" Depends Recommends | sed 's/^/  /'
done
# The dependencies dpkg-shlibdeps found, and the one between the library packages.
dpkg-deb --field "$root/$build"/printer-driver-inkdot_*.deb Depends | grep libcups2 >/dev/null &&
  dpkg-deb --field "$root/$build"/libinkdot-dev_*.deb Depends | grep -x "libinkdot0 (= 0.1.0)" >/dev/null ||
  { echo "a package lacks a dependency (libcups2, or libinkdot0 of the same version)" >&2; exit 1; }

work=$(mktemp -d /tmp/inkdot-package.XXXXXX)
chmod 755 "$work"
. scripts/private-cupsd.sh
installed=0
teardown() {
  local status=$?
  stop_private_cupsd "$status"
  if [ "${INKDOT_PACKAGE_KEEP:-0}" = 1 ]; then
    echo "kept $work (the packages stay installed)"
  else
    [ "$installed" = 0 ] || $SUDO apt-get remove -y --purge "${packages[@]}" >/dev/null 2>&1 || true
    rm -rf "$work"
  fi
  exit "$status"
}
trap teardown EXIT

echo "--- installing them with apt"
start=$SECONDS
installed=1
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y "${debs[@]}" >/dev/null
echo "installed in $((SECONDS - start)) s"
# Their files, and the directories that are their own (named after inkdot).
dpkg -L "${packages[@]}" | while read -r f; do if [ -n "$f" ] && { [ ! -d "$f" ] || [[ $f == */inkdot ]]; }; then echo "$f"; fi; done \
  >"$work/files"
size=0
for p in "${packages[@]}"; do size=$((size + $(dpkg-query -W -f '${Installed-Size}' "$p"))); done
echo "$(wc -l <"$work/files") files, $size KiB"
libdir=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
for f in /usr/bin/inkdot /usr/lib/cups/filter/rastertoinkdot "$libdir/libinkdot.so.0.1.0" "$libdir/libinkdot.a" \
         "$libdir/libinkdot-driver.so.0.1.0" /usr/include/inkdot/inkdot.h /usr/include/inkdot/inkdot_job.h \
         "$libdir/pkgconfig/inkdot.pc" "$libdir/cmake/inkdot/inkdotConfig.cmake" /usr/share/inkdot/report_plots.py \
         /usr/share/man/man1/inkdot.1 /usr/share/man/man8/rastertoinkdot.8 /usr/share/ppd/inkdot/inkdot.ppd; do
  grep -qx "$f" "$work/files" || { echo "the packages lack $f" >&2; exit 1; }
done
[ "$(readlink "$libdir/libinkdot.so.0")" = libinkdot.so.0.1.0 ] || { echo "libinkdot.so.0 is not a link to 0.1.0" >&2; exit 1; }
objdump -p "$libdir/libinkdot.so.0.1.0" | grep "SONAME *libinkdot.so.0$" >/dev/null || { echo "libinkdot has no SONAME libinkdot.so.0" >&2; exit 1; }
ldconfig -p | grep "libinkdot-driver.so.0 " >/dev/null || { echo "ldconfig does not know libinkdot-driver.so.0" >&2; exit 1; }

echo "--- the installed command"
cd "$work"
inkdot --version
[ "$(inkdot print --version)" = "$(inkdot --version)" ]
inkdot chart -o chart.png --width 400 --height 300 2>/dev/null
# Standard input through a pipe; the messages go to standard error.
inkdot print - -o stdin-print <chart.png >stdout.txt 2>stderr.txt
[ ! -s stdout.txt ] && grep -q "^printed" stderr.txt && [ -s stdin-print/stdin-cyan.pbm ] ||
  { echo "inkdot print - did not print standard input as expected" >&2; cat stderr.txt >&2; exit 1; }
inkdot report -o report --quick 2>report.log
grep -q '<figure id="tone"><img' report/report.html || { echo "inkdot report wrote no page" >&2; cat report.log >&2; exit 1; }
echo "report page: $(stat -c %s report/report.html) bytes"
# Without matplotlib the report says which Debian package brings it.
mkdir fake-python && echo 'raise ImportError("hidden for the test")' >fake-python/matplotlib.py
if PYTHONPATH=$work/fake-python inkdot report -o report2 --quick 2>report2.log; then
  echo "inkdot report went on without matplotlib" >&2; exit 1
fi
grep -q "python3-matplotlib" report2.log || { echo "no advice on the missing matplotlib" >&2; cat report2.log >&2; exit 1; }

echo "--- consumer programs"
# pkg-config: print_image prints its made-up picture into four PBM planes.
cc -Wall -Wextra -Werror -o print_image "$root/examples/print_image.c" $(pkg-config --cflags --libs inkdot-driver)
ldd print_image | grep -E "libinkdot-driver.so.0 => (/usr)?/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/" >/dev/null || { echo "print_image is not linked to the installed library" >&2; exit 1; }
./print_image gradient
for ink in cyan magenta yellow black; do
  # 720 x 360 one-bit pixels: the header "P4\n720 360\n" and 90 bytes a line.
  [ "$(head -c 11 gradient-$ink.pbm | tr '\n' ' ')" = "P4 720 360 " ] &&
    [ "$(stat -c %s gradient-$ink.pbm)" -eq $((11 + 90 * 360)) ] &&
    tail -c +12 gradient-$ink.pbm | tr -d '\0' | grep . >/dev/null ||
    { echo "gradient-$ink.pbm is not a 720 x 360 PBM with dots" >&2; exit 1; }
done
# find_package: lut_summary runs both engine protocols by hand.
cmake -S "$root/examples" -B consumer -G Ninja >/dev/null
cmake --build consumer >/dev/null
./consumer/lut_summary | tee lut.txt
grep -Eq "^CmLut: 4 channels, grid [1-9][0-9]*x[1-9][0-9]*x[1-9][0-9]*," lut.txt && grep -q "^HtContext ready" lut.txt ||
  { echo "lut_summary did not build the colour record and the halftone instance" >&2; exit 1; }

echo "--- a PDF through a private scheduler with the system's filters and drivers"
c=$work/cups
mkdir -p "$c/out"
chown lp:lp "$c/out"
start_private_cupsd "$c" /usr/lib/cups "${INKDOT_PACKAGE_CUPS_PORT:-8632}" INKDOT_PACKAGE_CUPS_PORT

model=$(lpinfo -h "$server" -m | awk '/inkdot\.ppd/ && model == "" { model = $1 } END { print model }')
[ -n "$model" ] || { echo "lpinfo -m does not list the inkdot driver" >&2; lpinfo -h "$server" -m | head >&2; exit 1; }
echo "driver: $(lpinfo -h "$server" -m | grep -F "$model")"
lpadmin -h "$server" -p inkdot -E -v "file:$c/out/page.ras" -m "$model"
lpstat -h "$server" -p inkdot

pdf=/usr/share/cups/data/default-testpage.pdf
file -b "$pdf" | grep "^PDF document" >/dev/null || { echo "$pdf is not a PDF" >&2; exit 1; }

# Prints the PDF with the given options, waits (at most 300 s) for the job to
# complete and keeps its raster as $c/$name.ras.
print_pdf() {
  local name=$1
  shift
  local request job t0=$SECONDS
  request=$(lp -h "$server" -d inkdot -t "package $name" "$@" "$pdf")
  job=$(sed -n 's/^request id is \(inkdot-[0-9]*\).*/\1/p' <<<"$request")
  [ -n "$job" ] || { echo "lp gave no job id: $request" >&2; return 1; }
  while [ $((SECONDS - t0)) -lt 300 ]; do
    if ! lpstat -h "$server" -W not-completed -o inkdot | grep "^$job " >/dev/null; then
      grep -q "\[Job ${job#inkdot-}\] Job completed\." "$c/log/error_log" && break
      echo "job $job ($name) stopped without completing" >&2
      return 1
    fi
    sleep 0.5
  done
  [ $((SECONDS - t0)) -lt 300 ] || { echo "job $job ($name) timed out" >&2; return 1; }
  echo "job $job ($name) completed in $((SECONDS - t0)) s"
  cp "$c/out/page.ras" "$c/$name.ras"
}

# The raster's pages: count, size and layout as expected, and dots on every plane.
check_raster() {
  local file=$1
  shift
  "$root/$build/tools/cups/inkdot-rastercheck" "$file" "$@" | tee "$file.txt"
  if awk '/ dots / { if ($3 + 0 <= 0) empty = 1 } END { exit !empty }' "$file.txt"; then
    echo "a plane of $file has no dots" >&2
    return 1
  fi
}

# A4 (595 x 842 points) at 720 x 720 dpi, from the PDF through gstoraster.
print_pdf colour
check_raster "$c/colour.ras" --pages 1 --width 5950 --height 8420 --space cmyk --bits 2 --order banded
print_pdf gray -n 2 -o ColorModel=Gray -o InkdotQuality=Draft -o Resolution=360x720dpi
check_raster "$c/gray.ras" --pages 2 --width 2975 --height 8420 --space k --bits 1 --order banded
grep -q "Started filter /usr/lib/cups/filter/rastertoinkdot" "$c/log/error_log" ||
  { echo "the scheduler never ran the installed rastertoinkdot" >&2; exit 1; }
grep -o "Started filter [^ ]*" "$c/log/error_log" | sort | uniq -c
lpadmin -h "$server" -x inkdot
stop_private_cupsd

echo "--- removing the packages"
cd "$root"
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get remove -y --purge "${packages[@]}" >/dev/null
installed=0
left=$(while read -r f; do if [ -e "$f" ] || [ -L "$f" ]; then echo "$f"; fi; done <"$work/files")
[ -z "$left" ] || { echo "left behind after removal:" >&2; echo "$left" >&2; exit 1; }
! ldconfig -p | grep libinkdot >/dev/null || { echo "ldconfig still lists libinkdot" >&2; exit 1; }
echo "package test passed in $((SECONDS - start_all)) s"
