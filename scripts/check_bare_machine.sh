#!/usr/bin/env bash
# check_bare_machine.sh [COMMAND...]: makes a bare Debian 12 with git in a folder, clones this
# repository's commit into it, and runs the commands there (./run.sh and ./test.sh without any), each
# as root and as an ordinary user with sudo. Needs root and debootstrap; takes the folder away again.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "$(id -u)" != 0 ]; then
  echo "check_bare_machine.sh: this needs root: run it with sudo" >&2
  exit 1
fi
scripts/install_packages.sh debootstrap git
[ $# -gt 0 ] || set -- ./run.sh ./test.sh

box=$(mktemp -d)
mounts=()
take_away() {
  for mount in "${mounts[@]}"; do umount "$mount"; done
  rm -rf --one-file-system "$box"
}
trap take_away EXIT

# The package sources of this machine, whatever stands in front of them.
copy_package_sources() {
  rm -rf "$1/etc/apt/sources.list.d" "$1/etc/apt/sources.list"
  for file in sources.list sources.list.d apt.conf.d; do
    [ ! -e "/etc/apt/$file" ] || cp -a "/etc/apt/$file" "$1/etc/apt/"
  done
  cp /etc/resolv.conf /etc/hosts "$1/etc/"
}

make_machine() {
  local mirror
  mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | head -n 1)
  debootstrap --variant=minbase --include=git,ca-certificates bookworm "$1" "$mirror" >"$box/debootstrap.log" ||
    { tail -n 20 "$box/debootstrap.log"; return 1; }
  copy_package_sources "$1"
}

mount_into() {
  for what in proc dev sys; do
    mount --rbind "/$what" "$1/$what"
    mount --make-rslave "$1/$what"
  done
}

# run_there ROOT USER COMMAND: a fresh clone and one of the README's commands.
run_there() {
  echo "== $3 as $2"
  chroot "$1" su - "$2" -c "set -e; git clone -q /origin ~/tavrin; cd ~/tavrin; $3; rm -rf ~/tavrin"
}
