#!/usr/bin/env bash
# Reads the finished bridge as a file: what it exports, needs and imports, and how it was linked.
# Usage: finished_file.sh LIBRARY ApiWrapper.java 32|64
set -euo pipefail
library=$1 java=$2 bits=$3
failures=0

fail() {
  echo "$library: $*" >&2
  failures=$((failures + 1))
}

# Compares two lists, one word a line, and tells what is missing and what is too much.
same() {
  local what=$1 expected=$2 actual=$3 difference
  difference=$(diff <(sort <<<"$expected") <(sort <<<"$actual") | sed -n 's/^</missing:/p; s/^>/too much:/p') || true
  [ -z "$difference" ] || fail "$what: $(tr '\n' ' ' <<<"$difference")"
}

natives=$(sed -n 's/^ *public native [A-Za-z]* \([A-Za-z]*\)(.*/Java_com_varden_tavo_iscsi_jni_ApiWrapper_\1/p' "$java")
[ "$(wc -l <<<"$natives")" = 39 ] || fail "$java declares $(wc -l <<<"$natives") native methods, expected 39"
same "exports" "$natives" "$(nm -D --defined-only "$library" | awk '{print $3}')"

same "needed libraries" "./libvdsdm.so" \
  "$(readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')"

operations="SDOpenDeviceiSCSI SDCloseDeviceiSCSI SDGetVersioniSCSI SDEnableDebugTraceiSCSI
  SDGetHbaDeviceNodePropertyiSCSI SDGetHbaDevicePortalPropertyiSCSI SDGetHbaDeviceDriverPropertyiSCSI
  SDGetHbaDeviceChipPropertyiSCSI SDGetDDBEntryNum SDGetDDBEntry SDGetDefaultDDBEntry SDGetInitialDDBEntry
  SDSetDDBEntry SDSendiSCSILogout SDGetDiscPortalPropertyiSCSI SDGetDiscNodePropertyiSCSI SDGetInitFW SDSetInitFW
  SDGetFWDefaults SDSetFWDefaults SDUpdateiSCSIFW SDResetHBA SDResetStatisticsiSCSI SDGetCrashRecord SDDiagPing
  SDSendScsiReportLunsCmdiSCSI SDSendScsiInquiryCmdiSCSI SDSendScsiReadCapacityCmdiSCSI SDGetStatisticsiSCSI SDGetLogs
  SDGetCHAPEntryNum SDGetCHAPTable SDSetCHAPTable SDGet_iSNSDiscoveryConfig SDSet_iSNSDiscoveryConfig
  SDGetAlliSNSDiscoveredTargets"
imports=$(nm -D --undefined-only "$library" | awk '{print $NF}' | sed 's/@.*//')
# Of the C functions it may use any, and need not use all.
cfunctions="printf memset memcpy malloc free strcpy strncpy strlen"
used=$(tr ' ' '\n' <<<"$cfunctions" | grep -Fx -f <(echo "$imports"))
same "imports" "$(tr -s ' ' '\n' <<<"$operations" | sed '/^$/d'; echo "$used")" "$imports"

dynamic=$(readelf -dW "$library")
for tag in INIT INIT_ARRAY FINI FINI_ARRAY PREINIT_ARRAY TEXTREL RPATH RUNPATH; do
  ! grep -q "($tag)" <<<"$dynamic" || fail "has a dynamic entry $tag"
done
! grep -E '\(FLAGS\)' <<<"$dynamic" | grep -q TEXTREL || fail "has text relocations"
grep -qE 'BIND_NOW|Flags:.*NOW' <<<"$dynamic" || fail "is not bound at load time"
segments=$(readelf -lW "$library")
grep -q GNU_RELRO <<<"$segments" || fail "has no read-only relocations (RELRO)"
grep GNU_STACK <<<"$segments" | grep -q ' RW ' || fail "has an executable stack, or none declared"
! grep -E '^ *LOAD' <<<"$segments" | grep -q 'RWE' || fail "has a segment that can be written and executed"
header=$(readelf -hW "$library")
case $bits in
  32) class=ELF32 machine='Intel 80386' ;;
  64) class=ELF64 machine='Advanced Micro Devices X86-64' ;;
esac
grep -q "Class: *$class" <<<"$header" || fail "is not $class"
grep -q "Machine: *$machine" <<<"$header" || fail "is not for $machine"
grep -q 'Type: *DYN' <<<"$header" || fail "is not a shared library"

[ "$failures" = 0 ] || exit 1
echo "$library: 39 exports, one needed library, $(wc -l <<<"$imports") imports, no initialiser"
