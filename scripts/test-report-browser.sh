#!/usr/bin/env bash
# Renders the report page in headless Chromium and checks that it rendered:
# the DOM holds every figure with an embedded PNG and the numbers table, and
# the screenshot is not blank. Makes a quick report unless given a page.
#
#   scripts/test-report-browser.sh                  # quick report in build/report-test
#   scripts/test-report-browser.sh PAGE.html [SHOT.png]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh chromium python3-matplotlib python3-numpy python3-pil

page=${1:-}
shot=${2:-}
if [ -z "$page" ]; then
  dir=build/report-test
  scripts/report.sh --quick -o "$dir"
  page=$dir/report.html
  shot=${shot:-$dir/screenshot.png}
fi
shot=${shot:-${page%.html}-screenshot.png}
url="file://$(realpath "$page")"

profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT
chrome=(chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run
        --disable-background-networking --disable-component-update --disable-sync
        --user-data-dir="$profile")

dom=$("${chrome[@]}" --dump-dom "$url" 2>/dev/null)
fail() { echo "test-report-browser: $*" >&2; exit 1; }
for figure in tone spectrum anisotropy texture; do
  grep -q "<figure id=\"$figure\"><img alt=\"[^\"]*\" src=\"data:image/png;base64," <<<"$dom" ||
    fail "the page has no $figure figure with an embedded image"
done
grep -q '<table id="flat-table">' <<<"$dom" || fail "the page has no table of flat patches"
grep -q '<table id="step-table">' <<<"$dom" || fail "the page has no table of tone steps"
[ "$(grep -o '<tr><td>' <<<"$dom" | wc -l)" -ge 2 ] || fail "the table of flat patches has no rows"

"${chrome[@]}" --hide-scrollbars --window-size=1280,2400 --screenshot="$(realpath -m "$shot")" "$url" >/dev/null 2>&1
[ -s "$shot" ] || fail "no screenshot"
# Non-blank: a good share of the pixels differ from the page background, and
# the figures bring colour (the ink curves and crops), not only black text.
/usr/bin/python3 - "$shot" <<'PY' || fail "the screenshot looks blank"
import sys
from PIL import Image
image = Image.open(sys.argv[1]).convert("RGB")
pixels = list(image.getdata())
background = max(set(pixels[:5000]), key=pixels[:5000].count)
inked = sum(1 for p in pixels if sum(abs(a - b) for a, b in zip(p, background)) > 60)
coloured = sum(1 for r, g, b in pixels if max(r, g, b) - min(r, g, b) > 80)
share, colour = inked / len(pixels), coloured / len(pixels)
print(f"screenshot {image.size[0]} x {image.size[1]}: {share:.1%} drawn, {colour:.1%} coloured")
sys.exit(0 if share > 0.03 and colour > 0.002 else 1)
PY
echo "test-report-browser: $page rendered (screenshot $shot)"
