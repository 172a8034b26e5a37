#pragma once

#include "Platform/Disks/PropertyList.h"

#include <optional>

/// A value of a property list read as what we need, whatever type it has there. Null stands for a
/// key that is not there. No reader fails.
namespace slatewise::PropertyReaders {

/// Trimmed text; nothing when nothing is left of it.
std::optional<std::string> string(const PropertyValue* value);

/// A whole number: fractions are cut off, too large whole numbers become the largest. 0 for what is
/// no number, and for a fractional one beyond the range.
std::int64_t int64(const PropertyValue* value);

/// False for what is neither true nor a number other than 0.
bool boolean(const PropertyValue* value);

} // namespace slatewise::PropertyReaders
