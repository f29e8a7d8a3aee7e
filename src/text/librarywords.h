#pragma once

#include <QString>

#include <string>

/// A word that the library, not the unit, has chosen, in the operator's language: kinds of as-run entries, names of
/// preset fields, roles of units. Any other text comes back as it is.
QString LibraryWord(const std::string& word);
