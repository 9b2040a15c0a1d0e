// Passwords of the users who log in to a tarn-riskd run with --auth, kept
// only as salted slow hashes (libsodium's crypto_pwhash, Argon2id).
#pragma once

#include <string>
#include <string_view>

#include "riskd/sqlite.h"

namespace riskd {

// Stores the hash of `password` for the known user `userId`, replacing any
// earlier one. False with *error when the user is unknown, the password is
// empty, hashing fails (out of memory) or the store cannot be written.
[[nodiscard]] bool SetPassword(Db& db, std::string_view userId, std::string_view password,
                               std::string* error);

// The stored hash of `userId`'s password; empty when there is none (or the
// user is unknown, or the query fails).
std::string PasswordHash(const Db& db, std::string_view userId);
// True when `password` matches `hash` (crypto_pwhash_str form). Slow by
// design (about a tenth of a second); safe on any thread.
[[nodiscard]] bool VerifyPassword(const std::string& hash, std::string_view password);

// True when at least one user has a password.
bool AnyPasswordSet(const Db& db);

} // namespace riskd
