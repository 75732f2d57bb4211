// Codes curves and cubes small: each node is stored as its difference from what the nodes around it
// let expect, in steps of 2^n codes, with few bits for what comes often.
// docs/renderer-contract.md describes the bytes for other programs.
// Pure: no windows.h. Tests: tests/reference_renderer/core/table_coding_test.cpp.
#pragma once

#include "reference_renderer/core/lattice_walk.h"
#include "reference_renderer/core/symbol_models.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ReferenceRenderer
{

// Steps are 2^0 to 2^kCoarsestStep codes. At the coarsest every node is what is expected of it.
inline constexpr std::uint32_t kCoarsestStep = 21;

class TableEncoder
{
public:
    // For tables of up to so many nodes. All later work allocates nothing.
    explicit TableEncoder(std::size_t mostNodes);

    // Room for the table to code: three whole numbers from 0 to kTopCode a node.
    std::span<float> Codes() noexcept { return m_codes; }

    // Codes the table in Codes() in steps of 2^step, which leaves there what reading gives: at most
    // half a step away, and 0 and kTopCode themselves where they were, with steps up to 2^15.
    // Answers the number of bytes, 0 when `bytes` is too small.
    std::size_t Encode(const TableShape& shape, std::uint32_t step,
                       std::span<std::uint8_t> bytes) noexcept;

private:
    std::vector<float> m_codes;
    std::vector<std::uint8_t> m_symbols;  // in the order of the walk, three a node
    std::vector<std::uint8_t> m_contexts; // likewise
};

// Whether DecodeTable can read these bytes.
bool IsTable(std::span<const std::uint8_t> bytes) noexcept;

// The exponent of the step of a table.
std::uint32_t StepOf(std::span<const std::uint8_t> bytes) noexcept;

// Fills `codes`, three floats a node, from bytes that IsTable accepted, whatever they hold: results
// are whole numbers from 0 to kTopCode.
void DecodeTable(std::span<const std::uint8_t> bytes, const TableShape& shape,
                 float* codes) noexcept;

} // namespace ReferenceRenderer
