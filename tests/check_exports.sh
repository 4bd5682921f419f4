#!/bin/sh
# Lists the dynamic symbols of the shared library and checks the eight operations are there.
set -eu
lib="$1"
missing=0
for name in CmNew CmSetResource CmGetLut CmDelete HalftoneNew HalftoneSetResource Halftone HalftoneDelete \
            CmSetResourceSized HalftoneSetResourceSized; do
  if ! nm -D --defined-only "$lib" | awk '{print $3}' | grep -qx "$name"; then
    echo "missing export: $name"; missing=1
  fi
done
exit $missing
