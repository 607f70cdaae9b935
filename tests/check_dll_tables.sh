#!/usr/bin/env bash
# Checks that the plug-in DLL exports exactly DllGetClassObject and DllCanUnloadNow and imports
# only DLLs that ship with Windows.
set -euo pipefail
objdump=$1
dll=$2

tables=$("$objdump" -p "$dll")

exports=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$tables" | tail -n +2 | grep -oE '\] +[A-Za-z_][A-Za-z0-9_]*$' | awk '{print $2}' | sort | tr '\n' ' ')
if [ "$exports" != "DllCanUnloadNow DllGetClassObject " ]; then
  echo "unexpected exports: $exports" >&2
  exit 1
fi

system_dlls='^(KERNEL32|USER32|GDI32|ADVAPI32|OLE32|OLEAUT32|WINSPOOL\.DRV|COMCTL32|SHELL32|VERSION|MSVCRT|SHLWAPI|COMDLG32|api-ms-win-[a-z0-9-]+)\.dll$|^WINSPOOL\.DRV$'
bad=0
while read -r name; do
  if ! grep -qiE "$system_dlls" <<<"$name"; then
    echo "import of a non-system DLL: $name" >&2
    bad=1
  fi
done < <(grep -oE 'DLL Name: .*' <<<"$tables" | cut -c11-)
exit $bad
