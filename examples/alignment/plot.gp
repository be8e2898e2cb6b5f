# Plots what alignment has measured: gnuplot -c plot.gp alignment.csv alignment-noise.png
set terminal pngcairo size 840,520 font "sans,11"
set output ARG2
set datafile separator ","
set grid
set xlabel "noise"
set ylabel "order parameter"
set xrange [0:6.4]
set yrange [0:1.02]
set key top right
curve(n) = sprintf("< awk -F, 'NR > 1 && $1 == %d' %s", n, ARG1)
bound(x) = x < 0.01 ? 1 : sin(x / 2) / (x / 2)
plot bound(x) with lines dashtype 2 linecolor "gray40" title "all agree: sin(noise/2) / (noise/2)", \
     curve(40) using 3:5 smooth unique with linespoints pointtype 5 linewidth 2 linecolor "#1f5fa8" title "N = 40", \
     curve(100) using 3:5 smooth unique with linespoints pointtype 7 linewidth 2 linecolor "#c05020" title "N = 100", \
     curve(400) using 3:5 smooth unique with linespoints pointtype 9 linewidth 2 linecolor "#30803a" title "N = 400", \
     "+" using (6.2832):(sqrt(pi) / (2 * sqrt(40))) every 100 with points pointtype 4 pointsize 2 linecolor "#1f5fa8" title "random, N = 40", \
     "+" using (6.2832):(sqrt(pi) / (2 * sqrt(100))) every 100 with points pointtype 6 pointsize 2 linecolor "#c05020" title "random, N = 100", \
     "+" using (6.2832):(sqrt(pi) / (2 * sqrt(400))) every 100 with points pointtype 8 pointsize 2 linecolor "#30803a" title "random, N = 400"
