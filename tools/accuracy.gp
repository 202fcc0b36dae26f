# The largest error found of each vector function, from the tables of docs/accuracy.md. data: the page; output: the picture.
set terminal svg size 1100,420 font "sans,12" background "white"
set output output
rows(letter, suffix) = sprintf("< awk -F ' *[|] *' '{ n = $2; gsub(/[^A-Za-z0-9_ ]/, \"\", n) } " \
  . "n ~ /^_tfn%s[A-Za-z0-9]+_%s$/ { sub(/^_tfn./, \"\", n); sub(/_[^_]*$/, \"\", n); print n, $3 }' %s", letter, suffix, data)
set logscale y 2
set yrange [0.48:4.2]
set ytics (0.55, 1, 2, 4)
set xrange [-0.5:27.5]
set xtics rotate by -55
set grid ytics
set key outside top center horizontal
set title "Largest error found, in units in the last place of the exact result"
plot rows("d", "HA") using 0:2:xtic(1) with points pointtype 7 linecolor "#1b6ca8" title "double, HA", \
  rows("d", "50") using 0:2 with points pointtype 6 linecolor "#1b6ca8" title "double, 50", \
  rows("s", "HA") using 0:2 with points pointtype 5 linecolor "#c1440e" title "single, HA", \
  rows("s", "21") using 0:2 with points pointtype 4 linecolor "#c1440e" title "single, 21"
