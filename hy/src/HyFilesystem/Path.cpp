#include <Hy/HyFilesystem.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cwchar>
#include <dlfcn.h>
#include <string_view>
#include <unistd.h>

// Paths as texts, and what the system knows of them without opening anything.

namespace Hy::HyFilesystem {
namespace {

constexpr char kSeparator = Directory::SEPARATOR_UNIVERSAL;
/// Room for the paths of the working directory and of the running program, bytes.
constexpr std::size_t kCurrentDirectoryRoom = 4096, kApplicationRoom = 2048;

std::string endedBySeparator(std::string path) {
    if (path.empty() || path.back() != kSeparator)
        path += kSeparator;
    return path;
}

std::string upToLastSeparator(const std::string& path) {
    return path.substr(0, path.rfind(kSeparator) + 1);
}

std::string behindLastSeparator(const std::string& path) {
    return path.substr(path.rfind(kSeparator) + 1);
}

/// Drops the names "." and takes each ".." with the name before it, between separators only.
std::string fold(const std::string& path) {
    const std::size_t root = path.find(kSeparator);
    if (root == std::string::npos)
        return path;
    std::string folded = path.substr(0, root + 1);
    std::size_t begin = root + 1;
    for (std::size_t end; (end = path.find(kSeparator, begin)) != std::string::npos;
         begin = end + 1) {
        const std::string_view name(path.data() + begin, end - begin);
        if (name == "..") {
            if (folded.size() > root + 1)
                folded.resize(folded.rfind(kSeparator, folded.size() - 2) + 1);
        } else if (name != ".") {
            folded.append(name) += kSeparator;
        }
    }
    return folded + path.substr(begin);
}

std::string currentDirectory() {
    std::array<char, kCurrentDirectoryRoom> buffer;
    return getcwd(buffer.data(), buffer.size()) ? endedBySeparator(buffer.data()) : std::string();
}

std::string withUniversalSeparators(std::string path) {
    std::replace(path.begin(), path.end(), '\\', kSeparator);
    return path;
}

/// A path that holds the zero byte names nothing: the system would cut it there.
std::string normalize(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos)
        return {};
    const std::string universal = withUniversalSeparators(path);
    return fold(universal.front() == kSeparator ? universal : currentDirectory() + universal);
}

std::string normalizeDirectory(const std::string& path) {
    return normalize(endedBySeparator(path.empty() ? "." : withUniversalSeparators(path)));
}

std::string directoryOfVariable(const char* variable, const char* otherwise) {
    const char* value = secure_getenv(variable);
    const std::string path = value && *value ? value : otherwise;
    return path.empty() ? path : normalizeDirectory(path);
}

std::string applicationDirectory() {
    std::array<char, kApplicationRoom> buffer;
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) == buffer.size()) // perhaps cut
        return {};
    return upToLastSeparator({buffer.data(), static_cast<std::size_t>(length)});
}

std::string wellKnownDirectory(Directory::WellKnownDirectory directory) {
    switch (directory) {
    case Directory::kCurrentDirectory:
        return currentDirectory();
    case Directory::kRootDirectory:
        return {kSeparator};
    case Directory::kHomeDirectory:
        return directoryOfVariable("HOME", "");
    case Directory::kApplicationDirectory:
    case Directory::kHalcyrLibraryDirectory:
        return applicationDirectory();
    case Directory::kTempDirectory:
        return directoryOfVariable("TMPDIR", "/tmp");
    }
    return {};
}

std::string toNative(std::string path) {
    std::replace(path.begin(), path.end(), kSeparator, Directory::SEPARATOR_NATIVE);
    return path;
}

bool canBeReached(const std::string& path) {
    return path.find('\0') == std::string::npos && access(path.c_str(), F_OK) == 0;
}

} // namespace

// Directory.

Directory::Directory(const std::string& path) : mPath(normalizeDirectory(path)) {}

Directory::Directory(const char* path) : mPath(path ? normalizeDirectory(path) : std::string()) {}

Directory::Directory(WellKnownDirectory directory) : mPath(wellKnownDirectory(directory)) {}

Directory::Directory(const File& file) : mPath(upToLastSeparator(file.toUniversalPath())) {}

std::string Directory::toNativePath() const {
    return toNative(mPath);
}

bool Directory::exists() const {
    return canBeReached(mPath);
}

std::string Directory::getName() const {
    return mPath.empty() ? mPath : behindLastSeparator(mPath.substr(0, mPath.size() - 1));
}

bool Directory::hasParent() const {
    return mPath != std::string{kSeparator} && parent().exists();
}

Directory Directory::parent() const {
    const std::size_t last =
        mPath.size() < 2 ? std::string::npos : mPath.rfind('/', mPath.size() - 2);
    Directory above(*this);
    if (last != std::string::npos)
        above.mPath.resize(last + 1);
    return above;
}

std::string Directory::relativeTo(const Directory& directory, bool) const {
    return mPath.starts_with(directory.mPath) ? mPath.substr(directory.mPath.size()) : mPath;
}

File Directory::file(const std::string& name) const {
    return File(mPath + name);
}

Directory Directory::directory(const std::string& name) const {
    return Directory(mPath + name);
}

bool Directory::hasFile(const std::string& name) const {
    return canBeReached(mPath + name);
}

bool Directory::hasDirectory(const std::string& name) const {
    return canBeReached(mPath + name);
}

bool Directory::operator<(const Directory& other) const {
    return toNativePath() < other.toNativePath();
}

// File.

File::File(const std::string& path) : mPath(normalize(path)) {}

File::File(const char* path) : mPath(path ? normalize(path) : std::string()) {}

File File::thatContains(const void* address) {
    Dl_info info{};
    return dladdr(address, &info) != 0 ? File(info.dli_fname) : File();
}

std::string File::toNativePath() const {
    return toNative(mPath);
}

bool File::exists() const {
    return canBeReached(mPath);
}

std::string File::getName() const {
    return behindLastSeparator(mPath);
}

std::string File::getBaseName() const {
    const std::string name = getName();
    return name.substr(0, name.rfind('.'));
}

std::string File::getExtension() const {
    const std::string name = getName();
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot);
}

bool File::operator<(const File& other) const {
    return toNativePath() < other.toNativePath();
}

// Others.

bool changeCurrentDirectory(const Directory& directory) {
    return chdir(directory.toNativePath().c_str()) == 0;
}

std::string UnicodeConversions::UTF16toUTF8(const std::wstring& text) {
    const std::size_t length = std::wcstombs(nullptr, text.c_str(), 0);
    if (length == static_cast<std::size_t>(-1))
        return {};
    std::string narrow(length, '\0');
    std::wcstombs(narrow.data(), text.c_str(), length);
    return narrow;
}

std::wstring UnicodeConversions::UTF8toUTF16(const std::string& text) {
    const std::size_t length = std::mbstowcs(nullptr, text.c_str(), 0);
    if (length == static_cast<std::size_t>(-1))
        return {};
    std::wstring wide(length, L'\0');
    std::mbstowcs(wide.data(), text.c_str(), length);
    return wide;
}

} // namespace Hy::HyFilesystem
