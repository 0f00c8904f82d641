#pragma once
#include <Kit/KitApi.h>

#include <string>
#include <vector>

/// Paths of files and directories, and what is done with them. A path is held absolute, with '/'
/// between its names and without "." and ".." in between; it need not exist. A failure answers false
/// or an empty result and prints nothing.
namespace Hy::HyFilesystem {
class File;

/// Path of a directory; ends with '/'.
class HY_API Directory {
public:
    static constexpr char SEPARATOR_UNIVERSAL = '/';
    static constexpr char SEPARATOR_NATIVE = '/';

    enum WellKnownDirectory : int {
        kCurrentDirectory = 0,
        kRootDirectory = 1,
        kHomeDirectory = 2,          ///< of the variable HOME, empty without it
        kApplicationDirectory = 3,   ///< which holds the running program
        kHalcyrLibraryDirectory = 4, ///< the same as kApplicationDirectory
        kTempDirectory = 5,          ///< of the variable TMPDIR, else the system's
    };

    /// No directory: the empty path.
    Directory() = default;
    /// Takes a path. Backslashes count as '/', the empty path as "."; one that begins with a name or
    /// with '.' begins at the current directory. "." and ".." are resolved in the text, so that
    /// "link/.." is where the link stands; above the root there is only the root.
    explicit Directory(const std::string& path);
    /// As for a string; null is no directory.
    explicit Directory(const char* path);
    /// Empty for a value that is not listed, and where the system does not tell.
    explicit Directory(WellKnownDirectory directory);
    /// The directory that a file is in.
    explicit Directory(const File& file);

    [[nodiscard]] const std::string& toUniversalPath() const { return mPath; }
    [[nodiscard]] std::string toNativePath() const;
    /// Whether the path can be reached; see access(2) with F_OK.
    [[nodiscard]] bool exists() const;
    /// Behind the last separator but the final one.
    [[nodiscard]] std::string getName() const;
    /// False for the root, and where the parent cannot be reached.
    [[nodiscard]] bool hasParent() const;
    /// The directory above; the root is its own.
    [[nodiscard]] Directory parent() const;
    /// The path without that of another directory in front, whole where it does not begin with that.
    /// The second argument changes nothing.
    [[nodiscard]] std::string relativeTo(const Directory& directory, bool reserved = false) const;

    /// What a name stands for in this directory; the name may hold separators.
    [[nodiscard]] File file(const std::string& name) const;
    [[nodiscard]] Directory directory(const std::string& name) const;
    [[nodiscard]] bool hasFile(const std::string& name) const;
    [[nodiscard]] bool hasDirectory(const std::string& name) const;

    /// Regular files here and links to such, by name; the second form appends them.
    [[nodiscard]] std::vector<File> files() const;
    void files(std::vector<File>& out) const;
    /// Directories here and links to such, by name; the second form appends them.
    [[nodiscard]] std::vector<Directory> directories() const;
    void directories(std::vector<Directory>& out) const;

    /// By the bytes of the native paths.
    [[nodiscard]] bool operator<(const Directory& other) const;
    [[nodiscard]] bool operator==(const Directory& other) const = default;

private:
    std::string mPath;
};

/// Path of a file.
class HY_API File {
public:
    /// No file: the empty path.
    File() = default;
    /// Takes a path as Directory does, but the empty one is no file.
    explicit File(const std::string& path);
    /// As for a string; null is no file.
    explicit File(const char* path);
    /// The program or shared library that holds an address; no file if none does.
    [[nodiscard]] static File thatContains(const void* address);

    [[nodiscard]] const std::string& toUniversalPath() const { return mPath; }
    [[nodiscard]] std::string toNativePath() const;
    /// Whether the path can be reached; see access(2) with F_OK.
    [[nodiscard]] bool exists() const;
    /// Behind the last separator.
    [[nodiscard]] std::string getName() const;
    /// The name up to its last dot, whole without one.
    [[nodiscard]] std::string getBaseName() const;
    /// The name from its last dot on, the dot included; empty without one.
    [[nodiscard]] std::string getExtension() const;

    /// By the bytes of the native paths.
    [[nodiscard]] bool operator<(const File& other) const;
    [[nodiscard]] bool operator==(const File& other) const = default;

private:
    std::string mPath;
};

HY_API bool changeCurrentDirectory(const Directory& directory);

/// Whether a text fits a pattern, case ignored: '*' is any run of characters, also none, '?' exactly
/// one. Null fits nothing.
[[nodiscard]] HY_API bool libwdmatch_match_i(const char* pattern, const char* text);
/// Files whose names fit a pattern (see libwdmatch_match_i): those of the sub-directories first,
/// depth first, then those here. Links are followed, but not into a directory that is being searched.
[[nodiscard]] HY_API std::vector<File> glob(const Directory& directory, const std::string& pattern,
                                            bool recursive);
/// Appends them.
HY_API void glob(const Directory& directory, const std::string& pattern, bool recursive,
                 std::vector<File>& out);

/// Makes a directory, with those above it where they are missing. True if it stands afterwards.
HY_API bool create(const Directory& directory);
/// Makes an empty file, with the directories above it. False if it exists, also as a link.
HY_API bool create(const File& file);
/// Makes an empty file of a fresh name that only this user can read and write; where none can be
/// made, the relative name "cannot_create_temp_file".
[[nodiscard]] HY_API File createTempFile();
/// Makes such a file and removes it: a name that was free.
[[nodiscard]] HY_API File createTempFileName();

/// Copies a regular file, with its mode, into a directory that exists. Onto itself: true, and nothing
/// is done. A copy that fails on the way is removed.
/// @param overwrite false refuses where a file of the name is there
HY_API bool copy(const File& file, const Directory& directory, bool overwrite);
/// Copies the contents of a directory into another, made if missing; links are followed. Onto itself:
/// true, and nothing is done. Into a directory inside of the source, and where links lead in a circle:
/// false. Ends at the first failure, and what has been copied stays.
HY_API bool copy(const Directory& source, const Directory& target, bool overwrite);

/// Gives a file or directory another name where it is; one of that name is replaced as by rename(2).
HY_API bool rename(const File& file, const std::string& name);
HY_API bool rename(const Directory& directory, const std::string& name);

HY_API bool remove(const File& file);
/// Removes a directory with all its contents: sub-directories first, then the rest. Links are
/// unlinked, never followed. Ends at the first failure. False if it is missing.
HY_API bool remove(const Directory& directory);

/// Between wide and narrow texts in the process's locale; empty where a character has no counterpart.
namespace UnicodeConversions {
[[nodiscard]] HY_API std::string UTF16toUTF8(const std::wstring& text);
[[nodiscard]] HY_API std::wstring UTF8toUTF16(const std::string& text);
} // namespace UnicodeConversions

} // namespace Hy::HyFilesystem
