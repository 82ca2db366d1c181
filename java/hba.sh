#!/bin/sh
# Starts the tool hba: the right Java VM, in the folder of the management library. See hba(1).
self=$(readlink -f -- "$0")
prefix=${self%/bin/*}
jars=$prefix/share/java
bridge=$prefix/@TAVO_BRIDGE_DIR@/libtavoiscsi.so
libraries=$prefix/@TAVO_LIBRARIES_DIR@

# Nothing outside the installation is run unless it is named.
java=${HBA_JAVA:-$prefix/@TAVO_RUNTIME_DIR@/bin/java}
case $java in
  /*) ;;
  */*) java=$PWD/$java ;;
esac
if ! command -v "$java" >/dev/null; then
  echo "hba: there is no Java VM $java. @TAVO_RUNTIME_ADVICE@" >&2
  exit 3
fi
case $(readlink -f -- "$(command -v "$java")") in
  *:*)
    echo "hba: no Java VM runs from a folder with a colon in its name, $java. Name another with HBA_JAVA." >&2
    exit 3
    ;;
esac

# --library belongs to the launcher, wherever it stands on the command line; all other arguments keep their order.
library=
left=$#
# A word that is being completed is no option yet.
typed=0
if [ "${1-}" = __complete ]; then
  typed=1
fi
while [ "$left" -gt "$typed" ]; do
  argument=$1
  shift
  left=$((left - 1))
  case $argument in
    --library=?*) library=${argument#*=} ;;
    --library | --library=)
      if [ "$typed" = 1 ] && [ "$left" = 1 ]; then
        set -- "$@" "$argument"
        continue
      fi
      if [ "$argument" = --library= ] || [ "$left" = 0 ] || [ -z "$1" ]; then
        echo "hba: --library needs a value: software, host, or a folder." >&2
        exit 2
      fi
      library=$1
      shift
      left=$((left - 1))
      ;;
    --)
      set -- "$@" --
      while [ "$left" -gt 0 ]; do
        set -- "$@" "$1"
        shift
        left=$((left - 1))
      done
      ;;
    *) set -- "$@" "$argument" ;;
  esac
done
if [ "$left" -gt 0 ]; then
  argument=$1
  shift
  set -- "$@" "$argument"
fi

# The bridge looks for ./libvdsdm.so. File names of the command line count from the caller's folder.
directory=$PWD
if ! [ . -ef "$directory" ]; then
  echo "hba: the current folder, $directory, no longer exists." >&2
  exit 2
fi
case $library in
  "") libraries=${HBA_LIBRARY_DIR:-$libraries/vdsdm} ;;
  software) libraries=$libraries/vdsdm ;;
  host) libraries=$libraries/vdsdm-host ;;
  *) libraries=$library ;;
esac
if ! CDPATH='' cd -- "$libraries" 2>/dev/null; then
  echo "hba: the folder of the management library, $libraries, cannot be entered." \
    "Name it with --library or HBA_LIBRARY_DIR." >&2
  exit 3
fi

# File names and arguments may hold any character. The VM reads them by its locale; the caller's may be missing, not
# installed or of another encoding, and this one is always there.
export LC_ALL=C.UTF-8

# A class path is split at colons, which the name of a folder may hold.
case $jars in
  *:*)
    exec 4<"$jars"
    jars=/proc/self/fd/4
    ;;
esac

# Classes that the VM need not parse again. A damaged archive would crash it; one that does not fit VM or jars it passes
# over in silence.
archive=
if [ -f "$jars/hba.jsa" ] && [ "$(cksum <"$jars/hba.jsa")" = "$(cat "$jars/hba.jsa.sum" 2>/dev/null)" ]; then
  archive=-XX:SharedArchiveFile=$jars/hba.jsa
fi

# The one command that stays for long keeps to little memory, instead of a share of the machine's.
memory=
if [ "${1-}" = serve ]; then
  memory='-Xms24m -Xmn8m -Xmx192m'
fi

# Only here the user's standard output is still that of the process. COLUMNS, when it is exported, the tool sees itself.
terminal=
if [ -t 1 ]; then
  # Within the parentheses descriptor 1 is another one.
  exec 5>&1
  terminal=$(stty size <&5 2>/dev/null) || terminal='0 0'
  exec 5>&-
fi
progress=
if [ -t 2 ] && [ "${TERM-}" != dumb ]; then
  progress=-Dhba.progress=true
fi

# What the libraries print goes to the standard error; descriptor 3, for the tool's results alone, is the user's
# standard output.
# shellcheck disable=SC2086 # HBA_JAVA_OPTIONS and memory hold several words.
exec "$java" -XX:TieredStopAtLevel=1 -XX:CompileThresholdScaling=3 -XX:+UseSerialGC -Xshare:auto \
  '-Xlog:cds*=off' ${archive:+"$archive"} -Dsun.reflect.inflationThreshold=1000000 $memory ${HBA_JAVA_OPTIONS-} \
  "-Dtavo.iscsi.library=${HBA_BRIDGE:-$bridge}" "-Dhba.directory=$directory" -Dhba.output=3 \
  ${terminal:+"-Dhba.terminal=$terminal"} ${progress:+"$progress"} \
  --add-opens java.base/java.io=ALL-UNNAMED \
  -cp "$jars/hba.jar:$jars/tavoiscsi.jar:$jars/picocli.jar:$jars/gson.jar" com.varden.tavo.iscsi.hba.Hba "$@" 3>&1 1>&2
