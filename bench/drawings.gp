# Draws growth.svg and peers.svg from the data files in `folder`.
set terminal svg size 900,500 dynamic enhanced font "sans-serif,13" background "white"
set grid ytics lc rgb "#dddddd"
set border 3
set tics nomirror

set output folder."/growth.svg"
set title "The bridge's snapshot by number of entries"
set xlabel "device database entries"
set ylabel "microseconds"
set key top left
set xrange [0:520]
set yrange [0:*]
machines = int(system("grep -c Java ".folder."/growth.dat"))
plot for [i=0:machines-1] folder."/growth.dat" index i using 1:2 with linespoints lw 2 pt 7 title columnhead(1)

set output folder."/peers.svg"
unset xlabel
set xrange [*:*]
set yrange [0.003:300]
set logscale y
set ylabel "bridge's time / peer's time"
set style data histogram
set style histogram clustered gap 1
set style fill solid 0.8 border -1
set boxwidth 0.9
set key below
set xtics font ",11"
files = system("ls ".folder."/peers-*.dat")
set terminal svg size 1000,1150 dynamic enhanced font "sans-serif,13" background "white"
set multiplot layout words(files),1
do for [file in files] {
    name = system("head -n 1 ".file." | cut -d'\"' -f2")
    columns = int(system("head -n 1 ".file." | grep -o '\"' | wc -l")) / 2
    set title name.": above 1 the peer is faster, below 1 the bridge"
    plot for [i=2:columns] file using i:xtic(1) title columnhead(i), 1 with lines lc rgb "black" notitle
}
unset multiplot
