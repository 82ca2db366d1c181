#!/usr/bin/env bash
# The Debian packages in a fresh Debian 12: install, use, remove, purge, and nothing is left behind. Needs root and
# debootstrap, and fetches packages from the mirror that this machine uses.
# Usage: install.sh SOURCE_DIR PRESET
set -euo pipefail
source=$1
preset=$2

skip() {
  echo "skipped: $*"
  exit 77
}
fail() {
  echo "failed: $*" >&2
  exit 1
}

# Mounts and processes of the test belong to namespaces of its own and go with it.
if [ -z "${TAVO_NAMESPACE-}" ]; then
  [ "$(id -u)" = 0 ] || skip "only root can make a Debian root"
  command -v debootstrap >/dev/null || skip "debootstrap is not installed"
  unshare --mount --pid --fork true 2>/dev/null || skip "this machine does not allow namespaces"
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  TAVO_NAMESPACE=$work unshare --mount --pid --fork --kill-child "$0" "$@"
  exit
fi
root=$TAVO_NAMESPACE/root
# In memory, where it is fast and leaves nothing behind.
mkdir "$root"
mount -t tmpfs -o size=3g none "$root"
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
unset TAVO_ADAPTER_FLASH "${!HBA_@}"

# Shows what a step printed only when the step failed.
quietly() {
  "$@" >"$TAVO_NAMESPACE/log" 2>&1 || {
    tail -n 30 "$TAVO_NAMESPACE/log" >&2
    fail "$*"
  }
}
inside() {
  chroot "$root" "$@"
}
# Runs a command inside and compares exit status and part of what it says: expect STATUS TEXT COMMAND...
expect() {
  local status=0 wanted=$1 text=$2
  shift 2
  inside "$@" >"$TAVO_NAMESPACE/said" 2>&1 || status=$?
  if [ "$status" != "$wanted" ] || ! grep -qF -- "$text" "$TAVO_NAMESPACE/said"; then
    cat "$TAVO_NAMESPACE/said" >&2
    fail "'$*' ends with $status; expected $wanted and '$text'"
  fi
}
# All files but those of the package manager's own books.
files() {
  (cd "$root" && find . -xdev \( -path ./proc -o -path ./tmp -o -path ./var/log -o -path ./var/cache -o \
    -path ./var/lib/dpkg -o -path ./var/lib/apt \) -prune -o -print | sort)
}

quietly cmake -E chdir "$source" cmake --workflow --preset "$preset"
packages=$source/build/$preset/packages
tool=$(echo "$packages"/tavoiscsi_*.deb)
development=$(echo "$packages"/tavoiscsi-dev_*.deb)
architecture=$(dpkg-deb -f "$tool" Architecture)

mapfile -t sources < <(apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
  'Created-By: Packages' 'Origin: Debian' | sort -u)
mirror=$(printf '%s\n' "${sources[@]}" | awk '$3 == "bookworm" { print $2; exit }')
[ -n "$mirror" ] || skip "apt knows no mirror of Debian 12"
quietly debootstrap --variant=minbase bookworm "$root" "$mirror"
printf '%s\n' "${sources[@]}" >"$root/etc/apt/sources.list"
mount -t proc proc "$root/proc"
[ "$architecture" != i386 ] || inside dpkg --add-architecture i386
# The index of updates may lag behind for one architecture; the release alone does as well.
if ! inside apt-get update >"$TAVO_NAMESPACE/log" 2>&1; then
  echo "deb $mirror bookworm main" >"$root/etc/apt/sources.list"
  quietly inside apt-get update
fi
cp "$tool" "$development" "$root/tmp"
tool=/tmp/${tool##*/}
development=/tmp/${development##*/}

# Once for what the packages depend on, which stays; then again to see what they themselves leave.
quietly inside apt-get install -y --no-install-recommends "$tool" "$development"
quietly inside dpkg --purge tavoiscsi-dev tavoiscsi
files >"$TAVO_NAMESPACE/before"
quietly inside dpkg -i "$tool" "$development"

if [ "$architecture" = i386 ]; then
  expect 3 hba-fetch-runtime hba version
  quietly inside hba-fetch-runtime
fi
expect 0 "management library" hba version
expect 0 array1.boot hba target list 0
expect 1 "adapter 0: no session with target 100" hba status
expect 0 "0 to 3, 525 targets" hba doctor
expect 0 "" hba firmware set 0 --alias=renamed
[ -f "$(find "$root/usr" -name hba.jsa)" ] || fail "there is no class archive"
inside install -d -o nobody /tmp/home
expect 0 "Tavo 2040" setpriv --reuid=nobody --regid=nogroup --clear-groups env HOME=/tmp/home hba show 0
for library in "$root"/usr/lib/*/tavoiscsi/vdsdm*; do
  expect 0 "" env HBA_LIBRARY_DIR="${library#"$root"}" hba version
done
for file in man/man1/hba.1.gz man/man7/hba-examples.7.gz man/man7/libvdsdm-host.7.gz \
  bash-completion/completions/hba zsh/vendor-completions/_hba fish/vendor_completions.d/hba.fish \
  java/tavoiscsi-javadoc.jar java/tavoiscsi-sources.jar; do
  [ -f "$root/usr/share/$file" ] || fail "there is no /usr/share/$file"
done

# What applications of one's own look for.
mkdir "$TAVO_NAMESPACE/application"
cat >"$TAVO_NAMESPACE/application/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(application LANGUAGES NONE)
find_package(tavoiscsi 1.0 CONFIG REQUIRED NO_DEFAULT_PATH PATHS ${WHERE})
END
quietly cmake -S "$TAVO_NAMESPACE/application" -B "$TAVO_NAMESPACE/built" \
  -DWHERE="$(dirname "$(find "$root/usr" -name tavoiscsiConfig.cmake)")"

quietly inside dpkg --remove tavoiscsi-dev tavoiscsi
[ -e "$root/var/lib/tavoiscsi" ] || fail "the settings are gone before the package is purged"
quietly inside dpkg --purge tavoiscsi-dev tavoiscsi
files >"$TAVO_NAMESPACE/after"
diff "$TAVO_NAMESPACE/before" "$TAVO_NAMESPACE/after" || fail "the packages leave files behind"
if command -v lintian >/dev/null; then
  lintian --allow-root --fail-on error --suppress-tags bad-jar-name "$packages"/*.deb
fi
echo "passed: $preset"
