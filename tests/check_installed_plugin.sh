#!/usr/bin/env bash
# Installs the plug-in into a fresh folder as a user would and checks the result: the binary
# checks pass on the installed file and on every library bundled with it, its search path is its
# own folder only, and every library it needs besides the host's and the system's runtimes lies
# beside it.
#   check_installed_plugin.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build="$1" source="$2"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

cmake --install "$build" --prefix "$dir" --component plugin >/dev/null
fmx="$dir/Ravelin.fmx"
[ -f "$fmx" ] || { echo "no Ravelin.fmx installed"; exit 1; }
bundled=()
for lib in "$dir"/*; do [ "$lib" = "$fmx" ] || bundled+=("$lib"); done
bash "$source/tests/check_plugin_binary.sh" "$fmx" "${bundled[@]}"

fail=0
paths=$(readelf -d "$fmx" | sed -n 's/.*(\(RPATH\|RUNPATH\)).*\[\(.*\)\]/\2/p')
if [ -n "$paths" ] && [ "$paths" != '$ORIGIN' ]; then
  echo "installed search path is not \$ORIGIN: $paths"; fail=1
fi
for file in "$fmx" "${bundled[@]}"; do
  for lib in $(readelf -d "$file" | sed -n 's/.*(NEEDED).*\[\(libicu.*\)\]/\1/p'); do
    [ -f "$dir/$lib" ] || { echo "needed library not bundled: $lib"; fail=1; }
  done
done
[ "$fail" = 0 ] && echo "installed plug-in OK"
exit "$fail"
