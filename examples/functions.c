/* Functions of arrays, and what happens to bad elements.
     gcc -m32 functions.c $(pkg-config --cflags --libs qor) -o functions */
#include <qor/qor.h>
#include <stdio.h>

/* [callback] */
static int on_error(TfnErrorContext* context) {
  if (context->code == TFN_STATUS_SING) context->res1 = -1000.0; /* what ln 0 is to be here */
  printf("element %d: ln %g, status %d\n", context->index, context->arg1, context->code);
  return 0;
}
/* [callback] */

int main(void) {
  if (!qor_cpu_supported()) return 2;
  {
    /* [functions] */
    const double x[4] = {1.0, 2.718281828459045, 0.0, -1.0};
    double exact[4], fast[4];
    _tfnSetErrorCallBack(on_error); /* this thread's; the mode has callbacks on from the start */
    _tfndLn_HA(4, x, exact);        /* errors of at most 0.55 units in the last place */
    _tfnClearErrorCallBack();
    _tfndLn_50(4, x, fast); /* faster, a few units */
    /* [functions] */
    printf("%.17g %.17g %g\n", exact[0], exact[1], exact[2]);
    printf("%.15g %.15g %g\n", fast[0], fast[1], fast[2]);
  }
  return 0;
}
