# docs/overview.png: what the demo leaves, on one page. Set before: folder, exact, output.
set terminal pngcairo noenhanced size 1100,760 font "DejaVu Sans,11" background rgb "white"
set output output
set multiplot layout 2,2 margins 0.06,0.98,0.07,0.945 spacing 0.09,0.14
set border linecolor rgb "#444444"
set grid linecolor rgb "#dddddd" linetype 1
set style fill solid 1.0
set key top right samplen 2 spacing 1.2
set xlabel offset 0, 0.5

set title "Ten million Gaussian variates beside the theory" font ",13"
set xlabel "x"
set xrange [-4.5:4.5]
set yrange [0:0.48]
set boxwidth 0.075
plot folder . "/gaussian.dat" using 1:3 with boxes linecolor rgb "#a6c8e4" title "drawn", \
     exp(-x * x / 2) / sqrt(2 * pi) with lines linewidth 2 linecolor rgb "#1b3a57" title "theory"

set title "The Nile after 1898: a million bootstrap resamples" font ",13"
set xlabel "change of the mean flow, 10^8 cubic metres a year"
set xrange [-380:-120]
set yrange [0:*]
set boxwidth 1.0 relative
plot folder . "/bootstrap.dat" using 1:($3 == 0 ? $2 : NaN) with boxes linecolor rgb "#d5e3ee" title "resamples", \
     folder . "/bootstrap.dat" using 1:($3 == 1 ? $2 : NaN) with boxes linecolor rgb "#8db9dc" title "the middle 95 %"

set title "A recording, low-passed by convolution" font ",13"
set xlabel "kHz"
set xrange [0:24] noextend
set yrange [-160:*]
plot folder . "/sound_spectrum.dat" using 1:2 with lines linewidth 1 linecolor rgb "#8db9dc" title "power in dB, recording", \
     folder . "/sound_spectrum.dat" using 1:3 with lines linewidth 1.2 linecolor rgb "#1b3a57" title "low-passed"

set title "Price of an option on ten correlated assets" font ",13"
set xlabel "paths"
set logscale x
set format x "10^%T"
set xrange [80:3e6]
set yrange [*:*]
plot folder . "/basket.dat" using 1:2:3 with yerrorbars pointtype 7 pointsize 0.7 linewidth 1.5 linecolor rgb "#5f9bc9" title "simulated price, 95 % interval", \
     exact with lines linewidth 2 linecolor rgb "#b5471b" title sprintf("closed form %.4f", exact)
unset multiplot
