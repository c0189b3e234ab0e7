#!/bin/sh
# Live tests of ui32-rdpsnap against real RDP servers on loopback.
#   live.sh SCENARIO RDPSNAP COMPARE GDISNAP WORKDIR
# shadow-32       FreeRDP's shadow server sharing an Xvfb desktop; 32-bit
#                 planar bitmap updates, compared with xwd -root.
# xrdp-24/-32     an xrdp session (xorgxrdp) of a throwaway user; cached
#                 interleaved/planar bitmaps and MemBlt, compared with xwd of
#                 the session's X display.
# xrdp-login-24/-32  xrdp's own login window, typed into, moved and dragged:
#                 glyph, brush, ScrBlt, OpaqueRect and bitmap-cache orders,
#                 compared with the same session drawn by FreeRDP's GDI.
# Every server runs under a time limit and is stopped by process id.  Exit
# 77 (skipped) when a server is not installed or, for xrdp, not root.
set -u
scenario=$1 rdpsnap=$2 compare=$3 gdisnap=$4 work=$5/$1
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 1
pids="" user=""

descendants() {
    for child in $(ps -o pid= --ppid "$1" 2>/dev/null); do
        echo "$child"
        descendants "$child"
    done
}
cleanup() {
    victims="$pids"
    for p in $pids; do victims="$victims $(descendants "$p")"; done
    [ -n "$user" ] && victims="$victims $(pgrep -u "$user")"
    kill $victims 2>/dev/null
    sleep 1
    kill -9 $victims 2>/dev/null
    [ -n "$user" ] && userdel -r "$user" 2>/dev/null
    return 0
}
trap cleanup EXIT
trap 'exit 1' INT TERM
skip() { echo "SKIP: $*"; exit 77; }
fail() { echo "FAIL: $*"; exit 1; }
need() { for c; do command -v "$c" > /dev/null || skip "$c is not installed"; done; }
# Every server process dies after 100 s whatever happens.
start() { timeout -k 5 100 "$@" > "$(basename "$1").log" 2>&1 & pids="$pids $!"; }
wait_for() { # wait_for SECONDS COMMAND...
    n=$(($1 * 5)); shift
    while ! "$@" > /dev/null 2>&1; do
        n=$((n - 1)); [ $n -gt 0 ] || return 1; sleep 0.2
    done
}
listening() { ss -ltn "sport = :$1" | grep -Eq "(127\.0\.0\.1|\[::1\]):$1 "; }

# snap BPP EXPECTED... [-- TOOL ARGUMENTS]: runs ui32-rdpsnap, prints its
# counts, requires success (it fails on library reports and on a connection
# that draws nothing), nothing skipped, and a non-zero count for every
# expected update, order or bitmap kind.
snap() {
    bpp=$1; shift
    expected=""
    while [ $# -gt 0 ] && [ "$1" != -- ]; do expected="$expected $1"; shift; done
    shift
    "$rdpsnap" -t 40 --bpp "$bpp" "$@" > snap.txt 2> snap.err; rc=$?
    cat snap.txt; grep -v '^\[' snap.err
    [ $rc = 0 ] || fail "ui32-rdpsnap exited with $rc"
    grep -q '^skipped: none$' snap.txt || fail "orders skipped"
    for kind in $expected; do  # "_" stands for a space in a name
        kind=$(echo "$kind" | tr _ ' ')
        grep -Eq "(^| )$kind [1-9]" snap.txt || fail "no $kind"
    done
}
same() { "$compare" "$1" "$2" || fail "$1 and $2 differ"; }

shadow() {
    need Xvfb freerdp-shadow-cli xwd xterm xsetroot xdpyinfo
    display=:73 port=33891
    start Xvfb $display -screen 0 1024x768x24 -nolisten tcp -noreset
    export DISPLAY=$display
    wait_for 10 xdpyinfo || fail "Xvfb did not start"
    xsetroot -solid '#305c8a'
    for window in '#c03030 24x6+620+40' '#30a040 24x6+700+120' '#e0c020 24x6+780+200'; do
        set -- $window
        start xterm -bg "$1" -geometry "$2" -e sleep 100
    done
    start xterm -geometry 80x30+20+20 -e sh -c 'seq -f "line %g of a window being scrolled" 300; PS1="$ " exec sh'
    start freerdp-shadow-cli /bind-address:127.0.0.1 /port:$port -auth
    wait_for 10 listening $port || fail "the shadow server did not start"
    sleep 1
    cat > shadow.script <<'SCRIPT'
click 300 300
type echo Hello, ui32 drawing an RDP desktop
key RETURN
wait 500
SCRIPT
    snap 32 BitmapUpdate planar -- --script shadow.script 127.0.0.1:$port snap.png
    xwd -root -silent > screen.xwd || fail "xwd failed"
    same screen.xwd snap.png
}

# Starts xrdp on loopback with a throwaway configuration (and, for a
# session, sesman and a throwaway user whose ~/startwm.sh draws the desktop).
xrdp_start() {
    [ "$(id -u)" = 0 ] || skip "the xrdp tests need root (a throwaway user and /run/xrdp)"
    need xrdp xrdp-sesman xwd
    port=33892
    mkdir -p /run/xrdp/sockdir && chmod 3777 /run/xrdp/sockdir
    sed "s|@WORK@|$PWD|; s|@PORT@|$port|" "$here/xrdp.ini" > xrdp.ini
    start xrdp --nodaemon --config "$PWD/xrdp.ini"
    wait_for 10 listening $port || fail "xrdp did not start"
}

xrdp_session() {
    bpp=$1
    xrdp_start
    user=rdpsnap$$
    password=Rs$(od -An -N6 -tx1 /dev/urandom | tr -d ' \n')
    useradd -m -s /bin/sh "$user" && echo "$user:$password" | chpasswd || fail "cannot create user $user"
    install -o "$user" -m 755 "$here/startwm.sh" "/home/$user/startwm.sh"
    sed "s|@WORK@|$PWD|" "$here/sesman.ini" > sesman.ini
    start xrdp-sesman --nodaemon --config "$PWD/sesman.ini"
    wait_for 10 listening 3350 || fail "sesman did not start"
    cached=$([ "$bpp" = 32 ] && echo planar || echo interleaved)
    snap "$bpp" CacheBitmapV2 MemBlt "cached_$cached" -- -s 800x600 -u "$user" -p "$password" 127.0.0.1:$port snap.png
    display=$(sed -n 's/.*Session started successfully for user .* on display \([0-9]*\).*/\1/p' sesman.log | tail -1)
    [ -n "$display" ] || fail "no session display in sesman.log"
    DISPLAY=:$display XAUTHORITY=/home/$user/.Xauthority xwd -root -silent > screen.xwd || fail "xwd failed"
    same screen.xwd snap.png
}

xrdp_login() {
    bpp=$1
    xrdp_start
    "$gdisnap" 127.0.0.1 $port "$bpp" "$here/login.script" reference.png 2> gdisnap.err || fail "gdisnap failed"
    snap "$bpp" CacheGlyph GlyphIndex CacheBrush PatBlt ScrBlt OpaqueRect MemBlt -- \
        --script "$here/login.script" 127.0.0.1:$port snap.png
    same reference.png snap.png
}

case $scenario in
    shadow-32) shadow ;;
    xrdp-24) xrdp_session 24 ;;
    xrdp-32) xrdp_session 32 ;;
    xrdp-login-24) xrdp_login 24 ;;
    xrdp-login-32) xrdp_login 32 ;;
    *) fail "unknown scenario $scenario" ;;
esac
echo "PASS: $scenario"
