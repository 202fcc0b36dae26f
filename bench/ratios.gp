# The vector functions beside the fastest other library of the same accuracy, from the table of docs/performance.md.
# data: the page; output: the picture.
set terminal svg size 1100,420 font "sans,12" background "white"
set output output
rows(what) = sprintf("< awk -F ' *[|] *' '/<!-- begin figures/ { on = 1 } /<!-- end figures/ { on = 0 } " \
  . "on && $2 ~ /^[A-Za-z0-9]+ %s$/ && $6 > 0 { split($2, w, \" \"); if (w[1] != \"math\") print w[1], $6 }' %s", what, data)
set logscale y 2
set xrange [-0.5:28.5]
set yrange [0.5:20]
set ytics (0.5, 1, 2, 4, 8, 16)
set xtics rotate by -55
set grid ytics
set key outside top center horizontal
set title "Their time over ours: the fastest 32-bit alternative of the same accuracy, 1000 numbers in cache"
set arrow from graph 0, first 1 to graph 1, first 1 nohead linewidth 2 linecolor "gray40" front
plot rows("double HA") using 0:2:xtic(1) with points pointtype 7 linecolor "#1b6ca8" title "double, 0.55 ulp", \
  rows("double 50") using 0:2 with points pointtype 6 linecolor "#1b6ca8" title "double, 2 ulp", \
  rows("single HA") using 0:2 with points pointtype 5 linecolor "#c1440e" title "single, 0.55 ulp", \
  rows("single 21") using 0:2 with points pointtype 4 linecolor "#c1440e" title "single, 2 ulp"
