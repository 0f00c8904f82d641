#include <Hy/DumpFileHelper.h>

#include <Hy/HyMessage.h>

namespace Hy {

namespace {

/// The file that the helpers share.
struct DumpHandler {
    int count = 0;
    std::FILE* file = nullptr;
};

DumpHandler handler;

std::FILE* openDump(const char* path) {
    if (!path)
        return stderr;
    if (std::FILE* file = std::fopen(path, "w"))
        return file;
    HyWarning(0, "DumpFileHelper::DumpFileHelper: the file %s must be writable.\n", path);
    return stderr;
}

} // namespace

DumpFileHelper::DumpFileHelper(const char* path) {
    if (handler.count++ == 0)
        handler.file = openDump(path);
}

DumpFileHelper::~DumpFileHelper() {
    if (--handler.count > 0)
        return;
    if (handler.file != stderr)
        std::fclose(handler.file);
    handler.file = nullptr;
}

std::FILE* DumpFileHelper::getFilePtr() const {
    return handler.file;
}

} // namespace Hy
