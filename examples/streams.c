/* Streams: made, copied, moved ahead, kept in a file.
     gcc -m32 streams.c $(pkg-config --cflags --libs qor) -o streams */
#include <qor/qor.h>
#include <stdio.h>

int main(void) {
  if (!qor_cpu_supported()) return 2;
  /* [streams] */
  const unsigned seed = 1871;
  qor_stream *stream, *copy, *loaded;
  double ahead[1], rest[1001], next[2];
  if (__wxrNewStreamEx(&stream, QOR_BRNG_MRG32K3A, 1, &seed) != QOR_RNG_OK) return 1;
  if (__wxrCopyStream(&copy, stream) != QOR_RNG_OK) return 1;

  _wxrdRngUniform(0, stream, 1001, rest, 0.0, 1.0);
  __wxrSkipAheadStream(copy, 1000); /* element 1000 without the thousand before */
  _wxrdRngUniform(0, copy, 1, ahead, 0.0, 1.0);

  __wxrSaveStreamF(stream, "stream.bin", -1);
  _wxrdRngUniform(0, stream, 1, next, 0.0, 1.0);
  if (__wxrLoadStreamF(&loaded, "stream.bin") != QOR_RNG_OK) return 1; /* goes on where the saved one stood */
  _wxrdRngUniform(0, loaded, 1, next + 1, 0.0, 1.0);
  /* [streams] */
  remove("stream.bin");
  printf("skipped: %.17g, drawn: %.17g\n", ahead[0], rest[1000]);
  printf("stream: %.17g, loaded: %.17g\n", next[0], next[1]);
  __wxrDeleteStream(&loaded);
  __wxrDeleteStream(&copy);
  __wxrDeleteStream(&stream);
  return 0;
}
