#include "platform/kit/check/ElfFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include <elf.h>

namespace {

constexpr std::string_view kNoteName = "CommunicationsService";
constexpr std::uint32_t kVersionNote = 1;

struct Elf32
{
    using Header = Elf32_Ehdr;
    using Section = Elf32_Shdr;
    using Symbol = Elf32_Sym;
};

struct Elf64
{
    using Header = Elf64_Ehdr;
    using Section = Elf64_Shdr;
    using Symbol = Elf64_Sym;
};

// A copy of what begins at an offset, because nothing in a file is aligned for sure.
template <class Value>
Value at(std::string_view data, std::size_t offset)
{
    if (offset > data.size() || data.size() - offset < sizeof(Value)) {
        throw std::runtime_error("is damaged: it ends in the middle of a table");
    }
    Value value;
    std::memcpy(&value, data.data() + offset, sizeof value);
    return value;
}

template <class Format>
class Reader
{
public:
    explicit Reader(std::string_view data)
        : data_(data)
    {
        auto const header = at<typename Format::Header>(data_, 0);
        for (std::size_t i = 0; i < header.e_shnum; ++i) {
            sections_.push_back(at<typename Format::Section>(data_, header.e_shoff + i * header.e_shentsize));
        }
    }

    ElfFile read()
    {
        for (auto const& section : sections_) {
            if (section.sh_type == SHT_DYNSYM) {
                readSymbols(section);
            } else if (section.sh_type == SHT_NOTE) {
                readNotes(content(section));
            }
        }
        return file_;
    }

private:
    std::string_view content(typename Format::Section const& section) const
    {
        if (section.sh_offset > data_.size() || data_.size() - section.sh_offset < section.sh_size) {
            throw std::runtime_error("is damaged: it ends in the middle of a section");
        }
        return data_.substr(section.sh_offset, section.sh_size);
    }

    // The table of symbol versions; empty when no symbol has one.
    std::string_view versions() const
    {
        for (auto const& section : sections_) {
            if (section.sh_type == SHT_GNU_versym) {
                return content(section);
            }
        }
        return {};
    }

    void readSymbols(typename Format::Section const& section)
    {
        std::string_view const symbols = content(section);
        std::string_view const versionTable = versions();
        if (section.sh_link >= sections_.size()) {
            throw std::runtime_error("is damaged: its symbols have no names");
        }
        std::string_view const names = content(sections_[section.sh_link]);
        constexpr std::size_t kSize = sizeof(typename Format::Symbol);
        for (std::size_t i = 1; i < symbols.size() / kSize; ++i) {
            auto const symbol = at<typename Format::Symbol>(symbols, i * kSize);
            bool const hasVersion =
                !versionTable.empty() &&
                (at<std::uint16_t>(versionTable, i * sizeof(std::uint16_t)) & 0x7fffU) > VER_NDX_GLOBAL;
            std::string_view const rest = names.substr(std::min<std::size_t>(symbol.st_name, names.size()));
            addSymbol(symbol, std::string(rest.substr(0, rest.find('\0'))), hasVersion);
        }
    }

    void addSymbol(typename Format::Symbol const& symbol, std::string const& name, bool hasVersion)
    {
        // The macros are the same for both formats.
        unsigned const binding = ELF64_ST_BIND(symbol.st_info);
        unsigned const visibility = ELF64_ST_VISIBILITY(symbol.st_other);
        if (symbol.st_shndx == SHN_UNDEF) {
            if (binding == STB_GLOBAL && !hasVersion) {
                file_.needed.push_back(name);
            }
        } else if (binding != STB_LOCAL && (visibility == STV_DEFAULT || visibility == STV_PROTECTED)) {
            file_.exported.insert(name);
            // Weak functions of the standard library's templates are exported by every program.
            bool const isStrong = ELF64_ST_TYPE(symbol.st_info) == STT_FUNC && binding == STB_GLOBAL;
            file_.exportsFunctions = file_.exportsFunctions || isStrong;
        }
    }

    void readNotes(std::string_view notes)
    {
        constexpr auto kAligned = [](std::size_t size) { return (size + 3) / 4 * 4; };
        while (notes.size() >= sizeof(Elf64_Nhdr)) {
            auto const header = at<Elf64_Nhdr>(notes, 0);
            std::size_t const begin = sizeof header + kAligned(header.n_namesz);
            std::size_t const end = begin + kAligned(header.n_descsz);
            if (end > notes.size()) {
                return;
            }
            bool const isOurs = notes.substr(sizeof header, kNoteName.size()) == kNoteName &&
                                header.n_namesz == kNoteName.size() + 1 && header.n_type == kVersionNote;
            if (isOurs && header.n_descsz > 0) {
                file_.version = std::string(notes.substr(begin, header.n_descsz - 1));
            }
            notes.remove_prefix(end);
        }
    }

    std::string_view data_;
    std::vector<typename Format::Section> sections_;
    ElfFile file_;
};

ElfFile parsed(std::string_view data)
{
    if (data.substr(0, SELFMAG) != ELFMAG) {
        throw std::runtime_error("is not an ELF file");
    }
    auto const bytes = at<std::array<unsigned char, EI_NIDENT>>(data, 0);
    if (bytes[EI_DATA] != (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? ELFDATA2LSB : ELFDATA2MSB)) {
        throw std::runtime_error("has another byte order than this machine");
    }
    return bytes[EI_CLASS] == ELFCLASS32 ? Reader<Elf32>(data).read() : Reader<Elf64>(data).read();
}

}  // namespace

ElfFile ElfFile::read(std::string const& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    if (!stream.is_open() || stream.bad()) {
        throw std::runtime_error(path + " cannot be read");
    }
    std::string const data = content.str();
    try {
        return parsed(data);
    } catch (std::runtime_error const& error) {
        throw std::runtime_error(path + " " + error.what());
    }
}
