#pragma once

#include <string>

#include "plist/value.h"

namespace plist {

/// The value in the text dialect, laid out for reading: tabs, one entry a line, short containers on
/// one line, a grammar's keys in their customary order. The same value always gives the same bytes,
/// which editors compare. Strings and containers read back as they were, and so do integers from 0
/// on, but for dictionaries with an empty key; other kinds print as their description().
/// Containers nested deeper than max_depth print as a mark that does not read back.
std::string PrettyPrintPList(value const& v);

/// PrettyPrintPList from the inside: `indent` tabs stand before the line on which the value
/// begins. `isKey`: the value stands after a key. `isSingleLine`: no line feeds are to come.
std::string stringWithIndentIsKeyIsSingleLine(value const& v, unsigned indent, bool isKey,
                                              bool isSingleLine);

/// Whether the value prints on one line.
bool plistFitsSingleLine(value const& v);

/// A string as a quoted string of the dialect.
std::string PrettyPrintString(std::string const& text);
/// A dictionary's key, quoted only if it must be. The empty key gives an empty text, which does
/// not read back.
std::string PrettyPrintKey(std::string const& key);

}  // namespace plist
