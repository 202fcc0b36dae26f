# The series with the means of its two parts, and the resampled changes of the mean with their 95 % interval.
# Set before: folder, name, unit, position, start, cut, end, mean1, mean2, change, low, high, deviation, resamples.
do for [kind in "png svg"] {
  if (kind eq "png") {
    set terminal pngcairo noenhanced size 1100,800 font "DejaVu Sans,12" background rgb "white"
  } else {
    set terminal svg noenhanced size 1100,800 font "DejaVu Sans,14" background rgb "white"
  }
  set output folder . "/bootstrap." . kind
  set multiplot
  set border linecolor rgb "#444444"
  set grid linecolor rgb "#dddddd" linetype 1
  set lmargin at screen 0.10
  set rmargin at screen 0.97

  set tmargin at screen 0.92
  set bmargin at screen 0.62
  set title name font ",16"
  set ylabel unit
  set xrange [start - 1:end + 1]
  set offsets 0, 0, graph 0.2, graph 0.05
  set key top right samplen 2 maxrows 1
  set xlabel position
  table = folder . "/series.dat"
  plot table using 1:2 with linespoints pointtype 7 pointsize 0.5 linewidth 1.2 linecolor rgb "#5f9bc9" notitle, \
       table using ($1 <= cut ? $1 : NaN):(mean1) with lines linewidth 3 linecolor rgb "#2f7d4f" title sprintf("mean %.2f", mean1), \
       table using ($1 > cut ? $1 : NaN):(mean2) with lines linewidth 3 linecolor rgb "#d2622a" title sprintf("mean %.2f", mean2)
  unset offsets

  set tmargin at screen 0.47
  set bmargin at screen 0.10
  set title sprintf("Change of the mean, %d resamples: %.2f, 95 %% interval %.2f to %.2f", resamples, change, low, high) font ",14"
  set xlabel "change of the mean" . (unit eq "value" ? "" : " in " . unit)
  set ylabel "density"
  reach = deviation > 0 ? 4.5 * deviation : 1
  set xrange [change - reach:change + reach]
  set yrange [0:*]
  set key top right maxrows 3 samplen 2 spacing 1.3
  set style fill solid 1.0 noborder
  set arrow 1 from change, graph 0 to change, graph 1 nohead linewidth 1.5 dashtype 2 linecolor rgb "#b5471b" front
  normal(x) = exp(-((x - change) / deviation) ** 2 / 2) / (deviation * sqrt(2 * pi))
  table = folder . "/bootstrap.dat"
  plot table using 1:($3 == 0 ? $2 : NaN) with boxes linecolor rgb "#d5e3ee" title "resamples", \
       table using 1:($3 == 1 ? $2 : NaN) with boxes linecolor rgb "#8db9dc" title "the middle 95 %", \
       (deviation > 0 ? normal(x) : NaN) with lines linewidth 2 linecolor rgb "#1b3a57" title "normal approximation"
  unset multiplot
  unset output
  reset
}
