#!/bin/sh
# The desktop of the xrdp test session: window frames (twm), text in
# terminals, a terminal that has scrolled, coloured windows and an icon-like
# picture.  Everything settles; the session ends when the test stops it.
xsetroot -solid '#2f5f8f'
twm &
xterm -geometry 64x16+30+40 -e sh -c 'ls -l /usr/bin | head -14; PS1="$ " exec sh' &
xterm -geometry 60x12+480+300 -e sh -c 'seq -f "scrolled line %g" 400; exec sleep 100' &
xterm -bg '#b03a2e' -geometry 20x4+560+60 -e sleep 100 &
xterm -bg '#d4ac0d' -geometry 20x4+760+140 -e sleep 100 &
xlogo -geometry 120x120+80+480 &
exec sleep 100
