#pragma once
#include <Kit/KitApi.h>

#include <cstdio>

namespace Hy {

/// Keeps a file for diagnostic dumps open: one for the whole process, as long as any helper lives.
class HY_API DumpFileHelper {
public:
    /// The first opens the file for writing; later ones share it, whatever their path.
    /// @param path null for standard error, which also serves where the file cannot be opened
    explicit DumpFileHelper(const char* path);
    DumpFileHelper(const DumpFileHelper&) = delete;
    DumpFileHelper& operator=(const DumpFileHelper&) = delete;
    /// The last closes the file, unless it is standard error.
    ~DumpFileHelper();

    /// The open file; owned by the helpers together.
    [[nodiscard]] std::FILE* getFilePtr() const;
};

} // namespace Hy
