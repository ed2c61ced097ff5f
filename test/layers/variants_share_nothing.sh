#!/bin/sh
# A file compiled with instructions that not every processor has must define nothing that the linker may pick for
# everybody: no weak and no unique symbol, but the variants themselves, whose names no other file defines. Usage: variants_share_nothing.sh NM OBJECT...
nm=$1
shift
[ $# -gt 0 ] || { echo "no objects given"; exit 1; }
bad=0
for object in "$@"; do
  defined=$("$nm" -C --defined-only "$object") || { echo "cannot read $object"; exit 1; }
  [ -n "$defined" ] || { echo "$object defines nothing"; exit 1; }
  shared=$(printf '%s\n' "$defined" | grep -E '^[0-9a-f]* *[WVu] ' | grep -vE '^[^(]*_(SSSE3|AVX2)')
  if [ -n "$shared" ]; then
    printf '%s shares\n%s\n' "$object" "$shared"
    bad=1
  fi
done
exit $bad
