#!/usr/bin/env bash
# check_bare_machine.sh [COMMAND...]: makes bare Debian 12 machines with git in a folder, clones this
# repository's commit into each, and runs the commands there (./run.sh and ./test.sh without any): as
# an ordinary user without sudo, who must be told what to install, as root, and as an ordinary user
# with sudo. Needs root and debootstrap; takes the folder away again.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "$(id -u)" != 0 ]; then
  echo "check_bare_machine.sh makes a machine in a folder and needs root for that" >&2
  exit 1
fi
if [ -z "${TAVRIN_OWN_MOUNTS-}" ]; then
  scripts/install_packages.sh debootstrap git
  TAVRIN_OWN_MOUNTS=1 exec unshare --mount scripts/check_bare_machine.sh "$@"  # they end with it
fi
[ $# -gt 0 ] || set -- ./run.sh ./test.sh
box=$(mktemp -d)

take_away() {
  umount -R "$box"/*/{proc,dev,sys} 2>/dev/null || true  # not all of them are mounted
  rm -rf --one-file-system "$box"
}
trap take_away EXIT

make_bare() {
  local mirror
  mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | head -n 1)
  debootstrap --variant=minbase --include=git bookworm "$box/bare" "$mirror" >"$box/log" ||
    { tail -n 20 "$box/log"; return 1; }
  git clone -q --bare . "$box/bare/origin"
  chroot "$box/bare" git config --system safe.directory /origin  # of which root is the owner
}

# make_machine NAME: a copy with an ordinary user.
make_machine() {
  cp -a "$box/bare" "$box/$1"
  cp /etc/resolv.conf /etc/hosts "$box/$1/etc/"
  for what in proc dev sys; do
    mount --rbind --make-rslave "/$what" "$box/$1/$what"
  done
  chroot "$box/$1" useradd --create-home --shell /bin/bash somebody
}

# run_there NAME USER COMMAND
run_there() {
  echo "== $3, as $2 on the machine $1"
  chroot "$box/$1" su - "$2" -c \
    "set -e; [ -d tavrin ] || git clone -q /origin tavrin; cd tavrin; $3"
}

make_bare
make_machine none
for command; do
  ! run_there none somebody "$command" >"$box/log" 2>&1 &&
    grep 'There is no sudo here. As root: apt-get install .*cmake' "$box/log" ||
    { cat "$box/log"; echo "$command does not say what to install"; exit 1; }
done
make_machine root
for command; do run_there root root "$command"; done
make_machine sudo
chroot "$box/sudo" sh -c 'apt-get update -qq && apt-get install -y -qq sudo >/dev/null 2>&1
  echo "somebody ALL=(ALL) NOPASSWD: ALL" >/etc/sudoers.d/somebody'
for command; do run_there sudo somebody "$command"; done
echo "Both ways work on a bare machine."
