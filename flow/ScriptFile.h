// ScriptFile: "ostravine.scr", the plain-text store of the parameter
// defaults, the pulse settings and the flow charts.
//
// The writer emits three sections:
//   parameter_defaults {
//    <scene>.<parameter> = ( <value> )        live values, scenes in list order
//   }
//   pulses {
//    pulse[ <n> ] = ( <raise>, <up>, <lower>, <start>, <repeats>, <delta> )
//   }
//   parameters {
//    in.<scene>.<parameter> = <expression>    one line per sink
//   }
// with a block written as `name ( inputs, separated by ", " ) ` and a float
// as `float ( <text> ) `. Numbers are written with six significant digits.
//
// The reader is a tolerant token scanner, not a parser: section changes are
// driven by the words "pulses" and "parameters" anywhere in a token, numbers
// are recognised before anything else, a pulse's input is read at its first
// mention only, and every damage simply yields fewer blocks or defaults. It
// reports nothing. The differences between what the writer emits and what
// the reader accepts are kept as they are (an empty sink line takes the next
// line's expression; pulses are numbered by their order in the file).
//
// Choices made here where the system leaves them open:
// - A parameters line whose sink cannot be created while no sink exists yet:
//   its expression is read past without creating blocks.
// - A pulse line that reaches six fields with fewer than six numbers (commas
//   standing as tokens of their own count as fields): the pulse is created
//   and its missing settings are padded with the defaults.
// - Numbers are read by the C++ stream, so three-digit exponents (1e+006,
//   1e-005) read the same as two-digit ones; the writer writes two digits.
// - Connections that would close a cycle are not made (the nested expression
//   is still read); charts are never cyclic after a load.
// - Expressions nest on the reader's own stack, so any depth reads without
//   overflow; the writer likewise.
#pragma once
#include <iosfwd>
#include <string>

// Replaces all charts and the defaults the file names. Returns 0 when the
// file was read, 1 when it could not be opened (the charts are cleared all
// the same, and every default stays).
int loadScript(const std::string& fileName);

// Writes the file anew, truncating it. Returns 0, or 1 when it could not be
// written.
int saveScript(const std::string& fileName);

// The editor's keys for the script: left ctrl + left shift + S saves and
// left ctrl + left shift + L loads "ostravine.scr". Each acts once per press:
// on the frame its letter goes down (held now, not held the frame before)
// while both modifiers are held. Save wins if both letters go down at once.
// The production's own loop does not call this (its editor is idle); an
// active editor does, and then runs saveScript or loadScript.
enum class ScriptKeyAction { none, save, load };
ScriptKeyAction scriptKeyAction(bool leftControl, bool leftShift, bool s, bool sLastFrame, bool l,
                                bool lLastFrame);

// The same over streams: readScript clears the charts first, reads until the
// end of the stream, then runs the chartsLoaded hook.
void readScript(std::istream& in);
void writeScript(std::ostream& out);
