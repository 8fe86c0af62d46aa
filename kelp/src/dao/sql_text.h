// Looking at SQL without understanding it, and keeping secrets out of what is said about it.
// thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace kelp::db {

// The first word of a statement in upper case, behind blanks, comments and parentheses; "" when
// it does not begin with one.
std::string FirstWord(std::string_view sql);

// Whether a statement that begins so ends a transaction (or, ROLLBACK TO, goes back in one).
bool IsRollback(std::string_view first_word);
bool IsCommit(std::string_view first_word);
// Whether a ROLLBACK only goes back to a savepoint.
bool GoesBackToSavepoint(std::string_view rollback);

// Replaces every occurrence of `secret` in `text`; an empty secret is none.
void HideSecret(std::string& text, std::string_view secret);

// The first line of a message, without blanks at its end.
std::string FirstLine(std::string_view message);

// Overwrites all that `text` holds, its unused capacity included, and empties it.
void Wipe(std::string& text) noexcept;

}  // namespace kelp::db
