#pragma once

#include <string_view>

namespace Zorvic::Internal {

/// Writes one line to standard error when the environment variable ZORVIC_LIBRARY_LOG is set, and nothing otherwise: a
/// console prints its own diagnostics there, and a lost link already shows in its status. Any thread.
void Note(std::string_view subject, std::string_view text);

/// Lets the RPC library's own messages take the same way: left alone it writes them straight to standard error, where
/// they frighten whoever reads the answer of a tool.
void NoteRpcMessages();

/// Gives the calling thread a name of at most 15 characters for debuggers and process lists.
void NameThread(const char* name);

}  // namespace Zorvic::Internal
