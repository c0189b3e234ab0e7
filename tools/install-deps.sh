#!/bin/sh
# Installs the Debian 12 packages that building and testing ui32 needs, when
# they are missing and we are root.  The set is chosen to coexist: the
# gcc-multilib / g++-multilib metapackages conflict with the armhf cross
# compiler, so the i386 build uses g++-12-multilib and libc6-dev-i386 only.
set -eu

# One list per area in tools/packages/*.txt; '#' starts a comment.  The
# arguments name the areas to install (default: every area).
lists=$(dirname "$0")/packages
if [ $# -gt 0 ]; then
    PACKAGES=$(for area in "$@"; do cat "$lists/$area.txt"; done | sed 's/#.*//' | tr -s ' \n' '\n' | sort -u)
else
    PACKAGES=$(cat "$lists"/*.txt | sed 's/#.*//' | tr -s ' \n' '\n' | sort -u)
fi

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done
[ -z "$missing" ] && exit 0

if [ "$(id -u)" != 0 ]; then
    echo "missing packages:$missing (run as root to install them)" >&2
    exit 1
fi

export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
# Refuse any combination that would remove installed packages.
if apt-get install -s --no-install-recommends $missing | grep -q '^Remv'; then
    echo "installing$missing would remove packages; refusing" >&2
    apt-get install -s --no-install-recommends $missing | grep '^Remv' >&2
    exit 1
fi
apt-get install -y -qq --no-install-recommends $missing
