# SPDX-License-Identifier: Apache-2.0
# Usage: gnuplot -c goals.gp OUTPUT POINTS...
# A panel for each file, which is named N-TITLE.points, and a line for each block of it.
set terminal svg size 1200,1050 dynamic font "sans-serif,12" background "#ffffff"
set output ARG1
set logscale xy
set xrange [14:75000]
set xtics ("16" 16, "64" 64, "256" 256, "1 KB" 1024, "4 KB" 4096, "16 KB" 16384, "64 KB" 65536)
set grid lc rgb "#dddddd"
set key at graph 1.02, 0.98 left top Left reverse samplen 1.5 spacing 1.1
set key autotitle columnhead
set lmargin 7
set rmargin 30
array colours[8] = ["#0072b2", "#d55e00", "#009e73", "#cc79a7", "#e69f00", "#56b4e9", "#000000", "#999999"]
set multiplot layout 3,2 title "Times as fast as the fastest peer, by the bytes of the text; 1 is as fast"
do for [panel = 2 : ARGC] {
    file = value(sprintf("ARG%d", panel))
    set title system(sprintf("basename '%s' .points | cut -d- -f2", file)) offset 0,-0.5
    stats file nooutput
    plot 1 notitle lc rgb "#444444" dt 2, \
         for [line = 0 : STATS_blocks - 2] file index line using 1:2 with linespoints \
         lc rgb colours[line + 1] lw 1.5 pt 7 ps 0.4 title columnheader(1)
}
unset multiplot
