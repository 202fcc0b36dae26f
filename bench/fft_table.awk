# From what qor_bench --mflops wrote, the tables of docs/performance.md: our MFLOPS and, in parentheses, the ratios to FFTW
# restricted to SSE2 and to FFTW as it comes.
/^#/ {
  split(substr($0, 3), part, ", ")
  work = part[1]
  who = part[2]
  next
}
NF == 2 {
  at[work, who, $1] = $2
  if (work ~ /^fft/) orders[$1] = 1; else lengths[$1] = 1
}
function cell(work, n, own, sse, avx) {
  own = at[work, "qor", n]
  sse = at[work, "FFTW SSE2", n]
  avx = at[work, "FFTW", n]
  if (own == "") return " |"
  if (sse > 0) { sum[work] += log(own / sse); count[work]++ }
  if (avx > 0) { far[work] += log(own / avx); fars[work]++ }
  return sprintf(" %d (%s, %s) |", own, sse > 0 ? sprintf("%.2f", own / sse) : "-", avx > 0 ? sprintf("%.2f", own / avx) : "-")
}
function table(title, columns, names, from, to, step, label, n, i, k, row) {
  k = split(columns, works, "; ")
  printf "| %s |", title
  split(names, name, "; ")
  for (i = 1; i <= k; ++i) printf " %s |", name[i]
  printf "\n|---|"
  for (i = 1; i <= k; ++i) printf "---|"
  print ""
  for (n = from; n <= to; n = step == 2 ? 2 * n : n + 1) {
    if (!(step == 2 ? n in orders : n in lengths)) continue
    row = sprintf("| %d |", step == 2 ? int(log(n) / log(2) + 0.5) : n)
    for (i = 1; i <= k; ++i) row = row cell(works[i], n)
    print row
  }
  printf "| geometric mean |"
  for (i = 1; i <= k; ++i) {
    printf " (%s, %s) |", count[works[i]] ? sprintf("%.2f", exp(sum[works[i]] / count[works[i]])) : "-",
      fars[works[i]] ? sprintf("%.2f", exp(far[works[i]] / fars[works[i]])) : "-"
  }
  print "\n"
}
END {
  table("order", "fft real forward double; fft real inverse double; fft real forward single; fft real inverse single",
    "real forward double; inverse double; forward single; inverse single", 16, 4194304, 2)
  table("order", "fft complex double; fft complex single", "complex double; complex single", 16, 4194304, 2)
  table("length", "dft complex double; dft complex single", "complex double; complex single", 6, 100000, 1)
}
