// Exported operations on mode, status, callback and the error path: translation only.
#include "base/target.h"
#include "tfn/mode.h"
#include "tfn/report.h"

using namespace qor;

QOR_ENTRY unsigned* _GetMode() { return tfn::mode_cell(); }
QOR_ENTRY int* _GetErrStatus() { return tfn::status_cell(); }
QOR_ENTRY TfnErrorCallBack* _GetCallBack() { return tfn::callback_cell(); }
QOR_ENTRY const void** _GetInputVectorPointer() { return tfn::base_pointer_cell(); }

QOR_ENTRY unsigned _tfnSetMode(unsigned mode) { return tfn::set_mode(mode); }
QOR_ENTRY unsigned _tfnGetMode() { return tfn::mode(); }
QOR_ENTRY int _tfnGetErrStatus() { return tfn::status(); }
QOR_ENTRY int _tfnSetErrStatus(int status) { return tfn::set_status(status); }
QOR_ENTRY int _tfnClearErrStatus() { return tfn::set_status(TFN_STATUS_OK); }
QOR_ENTRY TfnErrorCallBack _tfnSetErrorCallBack(TfnErrorCallBack callback) { return tfn::set_callback(callback); }
QOR_ENTRY TfnErrorCallBack _tfnGetErrorCallBack() { return tfn::callback(); }
QOR_ENTRY TfnErrorCallBack _tfnClearErrorCallBack() { return tfn::set_callback(nullptr); }
QOR_ENTRY void _tfnSetInterfInputVectorPointer(const void* base) { tfn::set_base_pointer(base); }

QOR_ENTRY void _tfndError(int code, int i, const double* a, const double* b, double* y, double* z, const char* name) {
  tfn::report(code, i, a, b, y, z, name);
}
QOR_ENTRY void _tfnsError(int code, int i, const float* a, const float* b, float* y, float* z, const char* name) {
  tfn::report(code, i, a, b, y, z, name);
}
QOR_ENTRY void _tfnStdErrorHandler(const TfnErrorContext* context) { tfn::standard_handler(context); }
QOR_ENTRY void _tfnStdErrorHandlerErrno(const TfnErrorContext* context) { tfn::errno_handler(context); }
QOR_ENTRY void _tfnStdErrorHandlerStderr(const TfnErrorContext* context) { tfn::stderr_handler(context); }
QOR_ENTRY void _tfnStdErrorHandlerExcept(const TfnErrorContext* context) { tfn::exception_handler(context); }
QOR_ENTRY int _tfnCreateFuncNameStr(const char* prefix, const char* name, const char* suffix, char* out) {
  return tfn::create_func_name(prefix, name, suffix, out);
}
