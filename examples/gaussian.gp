# The variates' histogram against the density, and below the distance in standard errors. Set before: folder, count.
do for [kind in "png svg"] {
  if (kind eq "png") {
    set terminal pngcairo size 1100,800 font "DejaVu Sans,12" background rgb "white"
  } else {
    set terminal svg size 1100,800 font "DejaVu Sans,14" background rgb "white"
  }
  set output folder . "/gaussian." . kind
  data = folder . "/gaussian.dat"
  set multiplot
  set border linecolor rgb "#444444"
  set grid linecolor rgb "#dddddd" linetype 1
  set xrange [-5:5]
  set lmargin at screen 0.09
  set rmargin at screen 0.97

  set tmargin at screen 0.91
  set bmargin at screen 0.36
  set title count . " Gaussian variates by each method" font ",16"
  set ylabel "density"
  set yrange [0:0.43]
  set xtics format ""
  set key at graph 0.98, 0.95 samplen 2 spacing 1.3
  set style fill solid 1.0 noborder
  set boxwidth 0.075 absolute
  plot data using 1:3 with boxes linecolor rgb "#a6c8e4" title "method 0, Box-Muller", \
       data using 1:5 with points pointtype 7 pointsize 0.5 linecolor rgb "#d98c1f" title "method 1, Box-Muller 2", \
       exp(-x * x / 2) / sqrt(2 * pi) with lines linewidth 2 linecolor rgb "#1b3a57" title "theory"

  set tmargin at screen 0.33
  set bmargin at screen 0.09
  unset title
  unset key
  set xtics format "%g"
  set xlabel "variate"
  set ylabel "standard errors\nfrom theory"
  set yrange [-4.5:4.5]
  set ytics 2
  set object 1 rectangle from graph 0, first -2 to graph 1, first 2 behind fillcolor rgb "#eef3f7" fillstyle solid noborder
  plot data using 1:4 with points pointtype 7 pointsize 0.6 linecolor rgb "#5f9bc9" notitle, \
       data using 1:6 with points pointtype 7 pointsize 0.6 linecolor rgb "#d98c1f" notitle, \
       0 with lines linewidth 2 linecolor rgb "#1b3a57" notitle
  unset multiplot
  unset output
  reset
}
