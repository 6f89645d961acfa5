#pragma once

#include <string>
#include <vector>

#include <QString>

// Texts from outside, in a form that a window of fixed width can show whatever they are.
namespace velicor {

// Long words may be broken, and of a very long text only the beginning is kept.
QString readable(const std::string& text, qsizetype longest = 2000);

// The notes; of very many only the first, and a last one that says so.
std::vector<std::string> readableNotes(const std::vector<std::string>& notes);

}  // namespace velicor
