#!/usr/bin/env bash
# An installation is whole in itself: it runs when sources, build tree and the Java VM beside them are gone, and when
# the class archive is damaged. Usage: installed.sh SOURCE_DIR BUILD_DIR JAVA_HOME
set -euo pipefail
source=$1
build=$2
vm=$(readlink -f "$3")
unset HBA_JAVA HBA_JAVA_OPTIONS HBA_LIBRARY_DIR HBA_BRIDGE

# Folders are hidden in a mount namespace, which takes root or a user namespace.
if unshare -m true 2>/dev/null; then
  isolate=(unshare -m)
elif unshare -rm true 2>/dev/null; then
  isolate=(unshare -rm)
else
  echo "no mount namespace can be made here"
  exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TAVO_ADAPTER_FLASH=$work/settings
mkdir "$TAVO_ADAPTER_FLASH"
prefix="$work/a prefix"
hidden=("$build" "$source")
[[ $vm == /usr/* ]] || hidden=("$vm" "${hidden[@]}")

cmake --install "$build" --prefix "$prefix" >/dev/null
[ -s "$prefix/share/java/hba.jsa" ]
for shell in bash-completion/completions/hba zsh/vendor-completions/_hba fish/vendor_completions.d/hba.fish; do
  grep -q __complete "$prefix/share/$shell"
done
"$build/bin/hba" show 0 >"$work/expected"
# shellcheck disable=SC2016 # the inner shell expands
"${isolate[@]}" sh -e -c '
  hba=$1
  shift
  for folder; do
    mount -t tmpfs none "$folder"
  done
  cd /
  exec "$hba" show 0' sh "$prefix/bin/hba" "${hidden[@]}" >"$work/printed"
diff "$work/expected" "$work/printed"

# Without its archive, or with a damaged one, the tool starts as before and says nothing.
archive=$prefix/share/java/hba.jsa
chmod u+w "$archive"
size=$(stat -c %s "$archive")
printf 'damaged' | dd of="$archive" bs=1 seek=$((size / 2)) conv=notrunc status=none
"$prefix/bin/hba" show 0 2>&1 | diff "$work/expected" -
truncate -s $((size / 2)) "$archive"
"$prefix/bin/hba" show 0 2>&1 | diff "$work/expected" -

# A Java VM cannot run from a folder with a colon; with another VM the installation can.
mv "$prefix" "$work/a:b"
if [ ! -L "$work/a:b/lib/runtime" ]; then
  ! "$work/a:b/bin/hba" show 0 2>"$work/printed"
  grep -q 'colon.*HBA_JAVA' "$work/printed"
fi
HBA_JAVA=$vm/bin/java "$work/a:b/bin/hba" show 0 | diff "$work/expected" -
