// Turns files into look records: recognises the kind of file by its contents, reads it, makes it
// fit and reports. Pure: no windows.h. Tests: tests/reference_renderer/core/look_import_test.cpp.
#pragma once

#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/look_record.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

// The files of the machine, or a test's. Paths are UTF-8.
class FileSource
{
public:
    virtual bool Exists(const std::string& path) const = 0;
    // The bytes of the whole file. Throws ImportError.
    virtual std::string Read(const std::string& path) const = 0;

protected:
    ~FileSource() = default;
};

// What an import gives.
struct ImportedLook
{
    std::vector<std::uint8_t> record; // kRecordSize bytes
    std::string kind;                 // such as "CDL", "3D LUT", "look record"
    std::string title;                // as the file says, UTF-8, may be empty
    std::string contents;             // one line: the numbers of the CDL, the sizes of the tables
    std::vector<std::string> warnings;
    double largestError = 0.0; // of reading the file and storing its tables, see LargestError
};

// Imports what LoadSessionFile was asked for: `path` is FILE, FILE#ID or CDL|LUT, `options` its
// bits, of which kImportDescribe changes nothing here. A file whose name holds '#' is found too.
// Throws ImportError and std::bad_alloc.
ImportedLook ImportLook(std::string_view path, std::uint32_t options, const FileSource& files);

// One line on what a look holds.
std::string ContentsOf(const StoredLook& look);

} // namespace ReferenceRenderer
