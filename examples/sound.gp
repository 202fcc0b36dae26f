# The recording before and after the filter, their spectra, and where its fragment was found.
# Set before: folder, name, end, cutoff, found, thinning.
do for [kind in "png svg"] {
  if (kind eq "png") {
    set terminal pngcairo noenhanced size 1100,1050 font "DejaVu Sans,12" background rgb "white"
  } else {
    set terminal svg noenhanced size 1100,1050 font "DejaVu Sans,14" background rgb "white"
  }
  set output folder . "/sound." . kind
  set multiplot
  set border linecolor rgb "#444444"
  set grid linecolor rgb "#dddddd" linetype 1
  set lmargin at screen 0.09
  set rmargin at screen 0.97
  set key top right samplen 2 spacing 1.2

  set xlabel offset 0, 0.4
  set tmargin at screen 0.95
  set bmargin at screen 0.74
  set title name font ",16"
  set xlabel "seconds"
  set ylabel "amplitude"
  set xrange [0:end]
  set style fill solid 1.0 noborder
  table = folder . "/sound_wave.dat"
  plot table using 1:2:3 with filledcurves linecolor rgb "#a6c8e4" title "recording", \
       table using 1:4:5 with filledcurves linecolor rgb "#1b3a57" title "low-passed"

  set tmargin at screen 0.63
  set bmargin at screen 0.40
  set title "Power spectra" font ",14"
  set xlabel "kHz"
  set ylabel "dB"
  set xrange [*:*] noextend
  set arrow 1 from cutoff, graph 0 to cutoff, graph 1 nohead linewidth 1.5 dashtype 2 linecolor rgb "#b5471b" front
  table = folder . "/sound_spectrum.dat"
  plot table using 1:2 with lines linewidth 1.2 linecolor rgb "#8db9dc" title "recording", \
       table using 1:3 with lines linewidth 1.5 linecolor rgb "#1b3a57" title "low-passed", \
       table using 1:4 with lines linewidth 1.2 linecolor rgb "#d98c1f" title sprintf("every %dth sample", thinning)
  unset arrow 1

  set tmargin at screen 0.29
  set bmargin at screen 0.07
  set title sprintf("Correlation with a noisy fragment: found at %.4f s", found) font ",14"
  set xlabel "seconds"
  set ylabel "coefficient"
  set xrange [0:end]
  set yrange [-1:1]
  set arrow 2 from found, -0.95 to found, -0.6 head filled linewidth 1.5 linecolor rgb "#b5471b" front
  plot folder . "/sound_search.dat" using 1:2 with lines linewidth 1.2 linecolor rgb "#2f7d4f" notitle
  unset multiplot
  unset output
  reset
}
