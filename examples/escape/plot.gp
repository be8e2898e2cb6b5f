# Plots what escape has measured: gnuplot -c plot.gp escape.csv escape-speed.png
set terminal pngcairo size 1260,420 font "sans,11"
set output ARG2
set datafile separator ","
set multiplot layout 1,3
set grid
set xlabel "desired speed in m/s"
set xrange [0.4:5.2]
set yrange [0:*]
unset key
set title "leaving time in s"
plot ARG1 using 1:5 skip 1 with points pointtype 7 pointsize 0.4 linecolor "gray60", \
     ARG1 using 1:5 skip 1 smooth unique with linespoints pointtype 7 linewidth 2 linecolor "#1f5fa8"
set title "outflow in persons per s"
plot ARG1 using 1:6 skip 1 with points pointtype 7 pointsize 0.4 linecolor "gray60", \
     ARG1 using 1:6 skip 1 smooth unique with linespoints pointtype 7 linewidth 2 linecolor "#1f5fa8"
set title "outflow per desired speed in persons per m"
plot ARG1 using 1:($6/$1) skip 1 with points pointtype 7 pointsize 0.4 linecolor "gray60", \
     ARG1 using 1:($6/$1) skip 1 smooth unique with linespoints pointtype 7 linewidth 2 linecolor "#1f5fa8"
