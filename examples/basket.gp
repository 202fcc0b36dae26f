# The simulated price of the geometric basket, with 95 % error bars, against the closed form.
# Set before: folder, exact.
do for [kind in "png svg"] {
  if (kind eq "png") {
    set terminal pngcairo noenhanced size 1100,500 font "DejaVu Sans,12" background rgb "white"
  } else {
    set terminal svg noenhanced size 1100,500 font "DejaVu Sans,14" background rgb "white"
  }
  set output folder . "/basket." . kind
  set border linecolor rgb "#444444"
  set grid linecolor rgb "#dddddd" linetype 1
  set logscale x
  set title "A call on the geometric mean of ten correlated assets" font ",16"
  set xlabel "paths"
  set ylabel "price"
  set key top right samplen 2 spacing 1.3
  table = folder . "/basket.dat"
  plot table using 1:2:3 with yerrorbars pointtype 7 pointsize 0.7 linewidth 1.5 linecolor rgb "#5f9bc9" title "simulated, 95 % interval", \
       exact with lines linewidth 2 linecolor rgb "#b5471b" title sprintf("closed form %.4f", exact)
  unset output
  reset
}
