#!/usr/bin/env bash
# tables.sh MSI: the tables of the installer for which Wine's engine is no witness: access lists, what is
# undone after a failure, what is detected, and the codes by which Windows knows files again.
set -euo pipefail
# shellcheck source=tests/package/checks.sh
. "$(dirname "$0")/checks.sh"
msi=$1

rows() { msiinfo export "$msi" "$1" | tr -d '\r' | tail -n +4 | LC_ALL=C sort; }
# row TABLE KEY: its other columns, with a bar between them.
row() { rows "$1" | grep -P "^\Q$2\E\t" | cut -f 2- | tr '\t' '|'; }
sequence_of() { row InstallExecuteSequence "$1" | sed 's/.*|//'; }

# Only the system and administrators may write, in the directory and below it; users may read and run.
expect 'one access list, for the installation directory' \
  'INSTALLDIR|CreateFolder|D:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)|' \
  "$(row MsiLockPermissionsEx OnlyAdministratorsWrite)"
expect 'no other one' 1 "$(rows MsiLockPermissionsEx | wc -l)"
expect 'which is made by the package' 'folder.INSTALLDIR' "$(row CreateFolder INSTALLDIR)"
expect 'below the programs of 64 bits' 'ProgramFiles64Folder|Tavrin' "$(row Directory INSTALLDIR)"

# 3090 is deferred, as the system, checked; 3154 ignores the result; 3410 also waits for a rollback.
register='--install --runtime "[INSTALLDIR]runtime"'
expect 'Register' "3090|TavrinService.exe|$register|" "$(row CustomAction Register)"
expect 'UndoRegister' '3410|TavrinService.exe|--uninstall|' "$(row CustomAction UndoRegister)"
expect 'Unregister' '3154|TavrinService.exe|--uninstall|' "$(row CustomAction Unregister)"
expect 'UndoUnregister' "3410|TavrinService.exe|$register|" "$(row CustomAction UndoUnregister)"

# In this order; a rollback runs the opposite way.
order='FindRelatedProducts AppSearch LaunchConditions CostFinalize NameTraces NameRuntimeTraces NameData
NameXrayData NameTun2socksData InstallInitialize RemoveExistingProducts StopServices UndoUnregister Unregister
DeleteServices RemoveFiles CreateFolders InstallFiles WriteEnvironmentStrings UndoRegister Register InstallFinalize'
expect 'the order of the actions' "$(tr '\n' ' ' <<<"$order")" "$(for action in $order; do
  echo "$(sequence_of "$action") $action"
done | sort -n | cut -d' ' -f2 | tr '\n' ' ')"
for action in UndoRegister Register; do
  expect "$action: when" "NOT REMOVE~=\"ALL\"" "$(row InstallExecuteSequence "$action" | cut -d'|' -f1)"
done
for action in UndoUnregister Unregister; do
  expect "$action: when" 'REMOVE~="ALL"' "$(row InstallExecuteSequence "$action" | cut -d'|' -f1)"
done
expect 'an upgrade removes what is older, a repair nothing' 'NOT Installed|1501' \
  "$(row InstallExecuteSequence RemoveExistingProducts)"

version=$(row Property ProductVersion)
code='{D5BA6CC0-9CA0-4E3F-9A64-0E8E5A7D7B11}'
expect 'what an upgrade replaces and what it refuses' "$code|0.0.0|$version||768||OLDER
$code|$version|||2||NEWER" "$(rows Upgrade | tr '\t' '|')"
expect 'for all users of the machine' 1 "$(row Property ALLUSERS)"
expect 'always the files of the package' amus "$(row Property REINSTALLMODE)"
expect 'no restart unasked' ReallySuppress "$(row Property REBOOT)"
expect 'the service is stopped at each change, and deleted when its program is gone' \
  'TavrinService|162||1|TavrinService.exe' "$(row ServiceControl StopAndDelete)"
expect 'the search path of the machine' '=-*PATH|[~];[INSTALLDIR]|tavrinctl.exe' "$(row Environment Path)"

# Windows takes a file without a version for older than each with one.
for file in TavrinService.exe tavrinctl.exe; do
  expect "$file: its version" "$version.0" "$(row File "$file" | cut -d'|' -f4)"
  expect "$file: no hash" '' "$(row MsiFileHash "$file")"
done
# The code of a component belongs to its path, in all versions.
expect 'the component of the service' '{8876AE96-1B0F-8977-A448-7519452BD5DD}|INSTALLDIR|256||TavrinService.exe' \
  "$(row Component TavrinService.exe)"
expect 'no code twice' '' "$(rows Component | cut -f 2 | sort | uniq -d)"

remark=$(row Property ARPCOMMENTS)
expect 'the list of installed programs says what is missing' \
  'Still to be put into the directory runtime: xray\xray.exe, xray\geoip.dat, xray\geosite.dat, tun2socks\tun2socks-windows-amd64.exe, tun2socks\wintun.dll.' "$remark"
expect 'and so does the summary' "Comments: $remark" "$(msiinfo suminfo "$msi" | tr -d '\r' | grep '^Comments')"
finish
