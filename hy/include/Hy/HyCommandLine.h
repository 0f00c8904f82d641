#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyTypes.h>

#include <sstream>
#include <string>

namespace Hy {

/// Reads options from a program's arguments and removes what it has used, so that the rest can be
/// passed on. Argument 0 counts like any other.
///
/// An absent option gives 0 or the empty text, silently; one whose value is missing gives the same
/// and an info message.
class HY_API HyCommandLine {
public:
    /// @param argc number of arguments; ends at the first null argument
    /// @param argv not copied: the texts must outlive the object
    HyCommandLine(int argc, const char** argv);
    HyCommandLine(int argc, char** argv) : HyCommandLine(argc, const_cast<const char**>(argv)) {}

    /// Number of the arguments that remain.
    [[nodiscard]] int count() const { return mArgC; }
    /// An argument that remains; empty, after a warning, out of the range.
    [[nodiscard]] const char* operator[](int index) const;
    /// The first argument that equals the name, or -1.
    [[nodiscard]] int getPos(const char* name) const;
    /// Removes arguments and keeps the order of the others. Positions that are out of range or
    /// occur twice: a warning, and nothing is removed.
    void eatArg(const int* positions, int count);

    /// Whether the option is there; with eat it is removed.
    bool checkFor(const char* name, bool eat);
    /// checkFor() of each name.
    /// @param names ends with null
    /// @return whether any was there
    bool checkForList(const char* const* names, bool eat);
    /// The decimal number behind the option. With eat, both are removed, the option alone where no
    /// number follows; as the last argument it is removed in any case.
    int getInt(const char* name, bool eat);
    /// As getInt(), for a number as strtod reads it.
    HyReal getHyReal(const char* name, bool eat);
    /// The text behind the option, which must not begin with '-'. Removed as by getInt().
    std::string getString(const char* name, bool eat);
    /// Numbers behind the option. Where fewer arguments follow, the option is removed in any case;
    /// where one is no number, it is removed with eat. Nothing is then written.
    /// @param out receives count numbers
    /// @return count, or 0
    int getHyRealArray(const char* name, HyReal* out, int count, bool eat);

    /// Adds a line to the help text.
    void addOption(const std::string& name, const std::string& description);
    /// Writes the help text to standard output.
    void printHelp() const;

private:
    template <class Number>
    Number getNumber(const char* name, bool eat, Number (*convert)(const char*),
                     const char* missing);
    void eatFrom(int first, int count);

    int mArgC = 0;
    std::ostringstream mOptions;
    HyArray<const char*> mArgv;
};

} // namespace Hy
