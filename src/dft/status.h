// Statuses, their classes and messages.
#pragma once

#include "qor/dft.h"

namespace qor::dft {

struct StatusRow {
  int status, error_class;
  const char* message;
};
inline constexpr StatusRow status_rows[] = {
    {QOR_DFT_OK, QOR_DFT_CLASS_OK, "No error."},
    {QOR_DFT_NO_MEMORY, QOR_DFT_CLASS_MEMORY, "Memory for tables or work space could not be allocated; free some."},
    {QOR_DFT_NULL_POINTER, QOR_DFT_CLASS_ARGUMENT, "A pointer that is needed is null."},
    {QOR_DFT_NOT_A_DESCRIPTOR, QOR_DFT_CLASS_ARGUMENT, "The handle is not one of a descriptor, or of a freed one."},
    {QOR_DFT_BAD_PRECISION, QOR_DFT_CLASS_ARGUMENT, "The precision must be QOR_DFT_DOUBLE or QOR_DFT_SINGLE."},
    {QOR_DFT_BAD_DOMAIN, QOR_DFT_CLASS_ARGUMENT, "The domain must be QOR_DFT_COMPLEX or QOR_DFT_REAL."},
    {QOR_DFT_BAD_RANK, QOR_DFT_CLASS_ARGUMENT, "The rank must be 1 to 7."},
    {QOR_DFT_BAD_LENGTH, QOR_DFT_CLASS_ARGUMENT, "Every length must be at least 1."},
    {QOR_DFT_UNKNOWN_PARAMETER, QOR_DFT_CLASS_ARGUMENT, "There is no such parameter; qor/dft.h lists them."},
    {QOR_DFT_READ_ONLY, QOR_DFT_CLASS_ARGUMENT,
     "The parameter can be read only; make another descriptor to change it."},
    {QOR_DFT_BAD_VALUE, QOR_DFT_CLASS_ARGUMENT,
     "The value is not one that the parameter can have; qor/dft.h lists them."},
    {QOR_DFT_FORMAT_MISMATCH, QOR_DFT_CLASS_SETTINGS,
     "The packed format does not go with the storage: set QOR_DFT_HALF_SPECTRUM with QOR_DFT_CE_COMPLEX, and "
     "QOR_DFT_PERM, "
     "QOR_DFT_PACK or QOR_DFT_CCS with QOR_DFT_CE_REAL."},
    {QOR_DFT_FORMAT_RANK, QOR_DFT_CLASS_SETTINGS,
     "Perm, Pack and CCS are for rank 1 and 2: set the storage QOR_DFT_CE_COMPLEX and the format "
     "QOR_DFT_HALF_SPECTRUM."},
    {QOR_DFT_SIGNAL_LAYOUT, QOR_DFT_CLASS_SETTINGS,
     "Elements of the signal share places or interleave: make each stride, and the distance, larger than what the "
     "smaller "
     "ones together reach."},
    {QOR_DFT_SPECTRUM_LAYOUT, QOR_DFT_CLASS_SETTINGS,
     "Elements of the spectrum share places or interleave: make each stride, and the distance, larger than what the "
     "smaller "
     "ones together reach."},
    {QOR_DFT_NO_DISTANCE, QOR_DFT_CLASS_SETTINGS,
     "More than one transform needs distances: set QOR_DFT_SIGNAL_DISTANCE and QOR_DFT_SPECTRUM_DISTANCE."},
    {QOR_DFT_IN_PLACE_LAYOUT, QOR_DFT_CLASS_SETTINGS,
     "In place the spectrum lies as the signal does: leave out its strides and distance, or set the same ones, or set "
     "QOR_DFT_OUT_OF_PLACE."},
    {QOR_DFT_IN_PLACE_REAL_LAYOUT, QOR_DFT_CLASS_SETTINGS,
     "In place a real signal's offset, strides and distance are twice those of its half-spectrum, and both last "
     "strides "
     "are 1; with Perm, Pack and CCS they are the same. Change them, or set QOR_DFT_OUT_OF_PLACE."},
    {QOR_DFT_TOO_LARGE, QOR_DFT_CLASS_SETTINGS,
     "An array would reach over 2 GiB: make lengths, strides, distance or the number of transforms smaller."},
    {QOR_DFT_NOT_COMMITTED, QOR_DFT_CLASS_STATE,
     "The descriptor is not committed: call commit after the last setting."},
    {QOR_DFT_PLACEMENT_MISMATCH, QOR_DFT_CLASS_STATE,
     "The arrays do not fit the placement: in place pass one array, out of place two different ones."},
};

constexpr const StatusRow* find_status(int status) {
  for (const StatusRow& row : status_rows) {
    if (row.status == status) return &row;
  }
  return nullptr;
}
inline const char* message_of(int status) {
  const StatusRow* const row = find_status(status);
  return row != nullptr ? row->message : "Not a status of transforms.";
}
inline bool is_of_class(int status, int error_class) {
  const StatusRow* const row = find_status(status);
  return row != nullptr && row->error_class == error_class;
}

}  // namespace qor::dft
