#include "PluginElf.h"

#include <cstdint>
#include <cstring>
#include <elf.h>
#include <fstream>

namespace Hy::HyPluginSystem {
namespace {

template <typename Record>
bool readAt(std::ifstream& file, std::uint64_t offset, Record& record) {
    file.seekg(static_cast<std::streamoff>(offset));
    return static_cast<bool>(file.read(reinterpret_cast<char*>(&record), sizeof record));
}

bool endsBeyond(std::uint64_t offset, std::uint64_t size, std::uint64_t length) {
    return offset > length || size > length - offset;
}

} // namespace

bool isCutElf(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff end = file.tellg();
    Elf64_Ehdr header;
    if (end < 0 || !readAt(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_phentsize != sizeof(Elf64_Phdr))
        return false; // what the linker itself refuses
    const auto length = static_cast<std::uint64_t>(end);
    if (endsBeyond(header.e_phoff, header.e_phnum * sizeof(Elf64_Phdr), length))
        return true;
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!readAt(file, header.e_phoff + i * sizeof segment, segment) ||
            endsBeyond(segment.p_offset, segment.p_filesz, length))
            return true;
    }
    return false;
}

} // namespace Hy::HyPluginSystem
