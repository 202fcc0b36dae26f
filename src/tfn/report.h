// The error path: what happens for each failing element.
#pragma once

#include "qor/tfn.h"

namespace qor::tfn {

// T is double or float. Indices count within the arrays passed; the record's index counts from the base pointer.
template <class T>
void report(int code, int index, const T* a, const T* b, T* y, T* z, const char* name);

// Complex element `index` of the array a: its parts take the places of the two arguments, and those of y[index] of the two
// results. Indices count complex elements.
template <class T>
void report_complex(int code, int index, const T* a, T* y, const char* name);

int create_func_name(const char* prefix, const char* name, const char* suffix, char* out);

void standard_handler(const TfnErrorContext* context);
void errno_handler(const TfnErrorContext* context);
void stderr_handler(const TfnErrorContext* context);
void exception_handler(const TfnErrorContext* context);

}  // namespace qor::tfn
