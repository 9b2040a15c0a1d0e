// Window placements kept in DialogPos.ini in the command-line directory.
//
// Value, section "DIALOG_POSITION", key = window name ("View-Holding",
// "View-Holding/Alert", ...): nine decimal numbers joined by ",", in the
// placement record's order with top before left and bottom before right:
//   top,left,bottom,right,maxX,maxY,minX,minY,showState
// Only the normal rectangle is ever applied; the rest is kept for the record.
#pragma once

#include <array>
#include <optional>
#include <string>

namespace vh {

struct sWindowPlacement {
  int normalTop = 0;
  int normalLeft = 0;
  int normalBottom = 0;
  int normalRight = 0;
  int maxX = -1;
  int maxY = -1;
  int minX = -1;
  int minY = -1;
  int showState = 1; // 1 normal, 2 minimised, 3 maximised
};

std::string FormatWindowPlacement(const sWindowPlacement& placement);

enum class PlacementParse { Ok, TooFew, Malformed };

// Splits at commas (empty pieces are skipped). Each field must be decimal
// digits with "-" allowed only as its first character, else Malformed; fewer
// than eight fields are TooFew. Fields past the ninth are ignored; a missing
// ninth leaves the show state at its default.
PlacementParse ParseWindowPlacement(const std::string& value, sWindowPlacement& out);

// Writes the placement of `name`. Does nothing and returns false for an
// empty name; false when the file cannot be written.
bool WriteWindowPlacement(const std::string& name, const sWindowPlacement& placement);

// The placement saved for `name`, or nullopt to keep the window where it
// is: empty name, no file, missing key, too few fields, or a value that is
// empty or malformed (these two compose the status texts "Could Not Find
// Saved Positions for <name>Dialog; Loading Defualt" and "Error Occured
// While Reading saved Positions for <name>Dialog; Loading Defualt").
std::optional<sWindowPlacement> ReadWindowPlacement(const std::string& name);

} // namespace vh
