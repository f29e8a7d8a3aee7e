#pragma once

#include <zorvic/types.h>

#include <QString>

// Why the unit did not do what the operator asked for, in the operator's words.

/// Why a preset was not saved. A preset with a key was to be updated, one without to be created.
QString NotSavedText(Zorvic::StatusCode status, const Zorvic::Preset& preset);
/// Why a command was not carried out; `reason` in the unit's own words, empty when it gave none.
QString RefusedText(const QString& what, Zorvic::StatusCode status, const QString& reason);
/// Why nothing is known of a media file; null for one that the unit does not list.
QString NoMetadataText(const Zorvic::Asset* asset);
