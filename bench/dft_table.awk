# From the rows of qor_bench '^dft$' --markdown, the table of docs/performance.md: a cell has FFTW's time over ours on one
# thread, the same on two, and our time on one thread over that on two.
BEGIN {
  FS = " *[|] *"
  kinds = split("complex double;complex single;real forward double;real forward single;real inverse double;real inverse single", kind, ";")
}
NF >= 11 && $2 ~ /^dft / {
  work = $2
  column = sub(/, 2 threads$/, "", work) ? 2 : sub(/, the second thread$/, "", work) ? 3 : 1
  n = split(work, word, " ")
  size = ""
  what = word[2]
  rank = 0
  for (i = 3; i <= n; ++i) {
    if (word[i] ~ /^[0-9]+$/) { size = word[i]; ++rank } else if (word[i] != "x") what = what " " word[i]
  }
  size = size "^" rank
  if (!(size in seen)) { seen[size] = 1; sizes[++count] = size }
  at[size, what, column] = $6
  sum[column] += log($6)
  ++cells[column]
}
function cell(size, what, column) { return (size, what, column) in at ? at[size, what, column] : "-" }
END {
  printf "| size |"
  for (k = 1; k <= kinds; ++k) printf " %s |", kind[k]
  printf "\n|---|"
  for (k = 1; k <= kinds; ++k) printf "---|"
  print ""
  for (i = 1; i <= count; ++i) {
    printf "| %s |", sizes[i]
    for (k = 1; k <= kinds; ++k) {
      printf " %s %s %s |", cell(sizes[i], kind[k], 1), cell(sizes[i], kind[k], 2), cell(sizes[i], kind[k], 3)
    }
    print ""
  }
  if (count > 0) {
    printf "\nGeometric means: %.2f on one thread, %.2f on two; the second thread brings %.2f.\n", exp(sum[1] / cells[1]),
      exp(sum[2] / cells[2]), exp(sum[3] / cells[3])
  }
}
