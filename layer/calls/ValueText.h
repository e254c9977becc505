#ifndef SONOLET_LAYER_CALLS_VALUETEXT_H
#define SONOLET_LAYER_CALLS_VALUETEXT_H

#include "tap/Value.h"

#include <string>

// Appends the value as the trace has it, in JSON: numbers, texts, flags and null as they are,
// everything else as {"kind": ...}, what is cut with the number of its "bytes". A secret shows that
// it is one. What the value points to is that of a record.
//
// JSON as in RFC 8259; docs/watching.md shows examples. Addresses are hexadecimal texts. Allocates
// for `out` alone.
void appendValue(std::string& out, const Value& value);

#endif
