#!/bin/sh
# The desktop of the xrdp test session: window frames (twm), text in
# terminals, a terminal that has scrolled, coloured windows and an icon-like
# picture on an 800x600 desktop.  Everything settles; the session ends when the test stops it.
xsetroot -solid '#2f5f8f'
twm &
xterm -geometry 64x16+30+40 -e sh -c 'ls -l /usr/bin | head -14; PS1="$ " exec sh' &
xterm -geometry 56x12+410+290 -e sh -c 'seq -f "scrolled line %g" 400; exec sleep 100' &
xterm -bg '#b03a2e' -geometry 20x4+470+50 -e sleep 100 &
xterm -bg '#d4ac0d' -geometry 20x4+600+130 -e sleep 100 &
xlogo -geometry 120x120+70+380 &
exec sleep 100
