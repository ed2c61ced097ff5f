#include "refhost/ElfCheck.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <vector>

namespace RefHost {

bool IsWholeSharedObject(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff end = file.tellg();
    if (!file || end < static_cast<std::streamoff>(sizeof(ElfW(Ehdr)))) return false;
    const uint64_t size = static_cast<uint64_t>(end);

    ElfW(Ehdr) head;
    file.seekg(0).read(reinterpret_cast<char*>(&head), sizeof head);
    if (!file || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0) return false;
    if (head.e_ident[EI_CLASS] != (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32)) return false;
    if (head.e_type != ET_DYN || head.e_phentsize != sizeof(ElfW(Phdr)) || head.e_phnum == 0) return false;
    const uint64_t headers = uint64_t{head.e_phnum} * sizeof(ElfW(Phdr));
    if (head.e_phoff > size || headers > size - head.e_phoff) return false;

    std::vector<ElfW(Phdr)> segments(head.e_phnum);
    file.seekg(static_cast<std::streamoff>(head.e_phoff));
    file.read(reinterpret_cast<char*>(segments.data()), static_cast<std::streamsize>(headers));
    if (!file) return false;
    for (const ElfW(Phdr) & segment : segments)
        if (segment.p_offset > size || segment.p_filesz > size - segment.p_offset) return false;
    return true;
}

}  // namespace RefHost
