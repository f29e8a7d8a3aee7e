#pragma once

#include <zorvic/session.h>

#include <QString>

// What a library may tell beyond the interface that every one has. A maker's need not: whether it does is found out
// when the program is linked, and what it does not tell is empty here.

/// Why the session's latest command failed, in the unit's own words.
QString LastReasonText(const Zorvic::Session& session);
/// Why the session has no link, in words of the unit or of the library; empty when simply nobody answers.
QString LinkProblemText(const Zorvic::Session& session);
QString LibraryVersionText();
/// The version of the unit's software, and of the protocol that it speaks. A round trip.
QString UnitVersionText(Zorvic::Session& session);
