#!/usr/bin/env bash
# Checks that every folder of the plug-in includes headers only of its own folder and of the
# layers below it. The layers, from the bottom:
#   util ddk < resources diagnostics < settings < device < printschema shortcuts < ui < core
# Folders of one layer do not include each other either. Prints every offending include line
# and fails when there is one.
set -euo pipefail
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}

declare -A layer=([util]=0 [ddk]=0 [resources]=1 [diagnostics]=1 [settings]=2 [device]=3
                  [printschema]=4 [shortcuts]=4 [ui]=5 [core]=6)

bad=0
for own in "${!layer[@]}"; do
  [ -d "$root/$own" ] || continue
  while IFS= read -r hit; do
    file=${hit%%:*}
    rest=${hit#*:}
    line=${rest%%:*}
    text=${rest#*:}
    dir=$(sed -E 's/.*#include[[:space:]]*"([A-Za-z_]+)\/.*/\1/' <<<"$text")
    [ "$dir" = "$own" ] && continue
    if [ -z "${layer[$dir]+x}" ] || [ "${layer[$dir]}" -ge "${layer[$own]}" ]; then
      echo "${file#"$root"/}:$line: $own/ must not include $dir/: $text" >&2
      bad=1
    fi
  done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"[A-Za-z_]+/' "$root/$own" \
             --include='*.h' --include='*.cpp' --include='*.rc' || true)
done
exit $bad
