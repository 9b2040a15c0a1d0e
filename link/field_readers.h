// Typed readers of one value of a message field. Each returns 1 on success
// and 0 on failure; on failure *kind (when not NULL) becomes kReaderMissing
// when the field or index is absent (library code KDL_E_NOTFOUND) and
// kReaderFailed for any other failure.
//
// Numbers travel as decimal text and are converted the way the C library
// converts: leading blanks skipped, conversion stops at the first character
// that does not fit, no digits give 0. Values beyond the 32-bit range
// saturate. A numeric value is cut to fit the reader's buffer (31, 127 and
// 63 characters for long, int and double) before conversion.
#pragma once

#include <cstdint>
#include <string>

#include "kdl/kdl.h"

namespace vh {

// *out = the value's bytes exactly. On failure *out is set empty.
int ReadTextField(const KdlMsg* msg, uint32_t tag, uint32_t index, std::string* out, int32_t* kind);

// The decimal-to-long conversion (32-bit). On failure *out is unchanged.
int ReadLongField(const KdlMsg* msg, uint32_t tag, uint32_t index, int32_t* out, int32_t* kind);

// The decimal-to-int conversion. On failure *out is unchanged.
int ReadIntField(const KdlMsg* msg, uint32_t tag, uint32_t index, int32_t* out, int32_t* kind);

// The decimal-to-double conversion, always with '.' as the decimal point
// whatever the process locale. On failure *out is unchanged.
int ReadDoubleField(const KdlMsg* msg, uint32_t tag, uint32_t index, double* out, int32_t* kind);

} // namespace vh
