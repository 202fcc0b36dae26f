# MFLOPS of the transforms of 2^order values over their length. data: what qor_bench --mflops wrote; output: the picture.
set terminal svg size 1100,1250 font "sans,11" background "white"
set output output
set logscale x 2
set format x "2^{%L}"
set xrange [12:6000000]
set yrange [0:*]
set grid
set key bottom center
series(kind, precision, who) = sprintf("fft %s %s, %s", kind, precision, who eq "FFTW_SSE2" ? "FFTW SSE2" : who)
legend(who) = who eq "FFTW_SSE2" ? "FFTW, SSE2" : who eq "FFTW" ? "FFTW, AVX allowed" : who
set multiplot layout 3,2
do for [kind in "'real forward' 'real inverse' complex"] {
  do for [precision in "double single"] {
    set title sprintf("%s, %s precision: MFLOPS, counted as %s n log_2 n", kind, precision, kind eq "complex" ? "5" : "2.5")
    plot for [who in "qor FFTW_SSE2 FFTW"] data index series(kind, precision, who) using 1:2 with linespoints \
      title legend(who)
  }
}
unset multiplot
