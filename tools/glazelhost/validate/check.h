// What a group of checks works with: the file that is judged, random numbers, and words for what it
// finds. Texts name no addresses and no times: two runs with one seed tell the same.
#pragma once

#include "tools/glazelhost/validate/findings.h"
#include "tools/glazelhost/validate/group_choice.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace GlazelHost
{

// "E_INVALIDARG", or the number in hexadecimal; the same on every system.
std::string ResultName(HRESULT result);

class Check
{
public:
    Check(std::string file, std::string_view group, const ValidateOptions& options,
          Findings& findings)
        : m_file(std::move(file)), m_rendererFolder(options.rendererFolder),
          m_random(SeedOf(group, options.seed)), m_findings(findings)
    {
    }
    Check(const Check&) = delete;
    Check& operator=(const Check&) = delete;

    const std::string& File() const noexcept { return m_file; } // full path, UTF-8
    const std::string& RendererFolder() const noexcept { return m_rendererFolder; }

    // `otherwise` is the failure when it does not hold. Answers whether it holds.
    bool That(bool holds, const std::string& otherwise);
    // `call` is what was called, with what: "put_Duration(0)".
    bool Answers(HRESULT wanted, HRESULT result, const std::string& call);
    bool Fails(HRESULT result, const std::string& call);
    bool Succeeds(HRESULT result, const std::string& call);
    void Warn(const std::string& text) { m_findings.Warn(text); }
    void Skip(const std::string& why) { m_findings.Skip(why); }

    std::uint32_t Random(std::uint32_t below) noexcept { return m_random() % below; }
    std::vector<std::byte> RandomBytes(std::size_t count);

private:
    std::string m_file;
    std::string m_rendererFolder;
    std::mt19937 m_random;
    Findings& m_findings;
};

} // namespace GlazelHost
