# From the rows of qor_bench 'complex (double|single)' --markdown, the table of docs/performance.md: ns a number and, in
# parentheses, the ratios to the C library's loop and to the textbook formula.
BEGIN {
  FS = " *[|] *"
  kinds = split("double HA;double LA;single HA;single LA", kind, ";")
  split("`_tfnz*_HA`;`_tfnz*_50`;`_tfnc*_HA`;`_tfnc*_21`", head, ";")
}
NF >= 11 && $2 ~ / complex (double|single) (HA|LA)$/ {
  split($2, word, " ")
  name = word[1]
  what = word[3] " " word[4]
  if (!(name in seen)) { seen[name] = 1; names[++count] = name }
  ns[name, what] = $3
  against = $4 ~ /^plain/ ? 2 : 1
  ratio[name, what, against] = $6
  sum[what, against] += log($6)
}
function mean(what, against) { return sprintf("%.2f", exp(sum[what, against] / count)) }
END {
  printf "| function |"
  for (k = 1; k <= kinds; ++k) printf " %s |", head[k]
  print "\n|---|---|---|---|---|"
  for (i = 1; i <= count; ++i) {
    printf "| %s |", names[i]
    for (k = 1; k <= kinds; ++k) {
      printf " %s (%s, %s) |", ns[names[i], kind[k]], ratio[names[i], kind[k], 1], ratio[names[i], kind[k], 2]
    }
    print ""
  }
  if (count == 0) exit
  printf "| geometric mean |"
  for (k = 1; k <= kinds; ++k) printf " (%s, %s) |", mean(kind[k], 1), mean(kind[k], 2)
  print ""
}
