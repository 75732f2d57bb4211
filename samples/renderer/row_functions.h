// Chooses the row functions of a look. Pure: no windows.h.
#pragma once

#include "samples/renderer/prepared_look.h"

// The tables that a look has.
enum class TableKind
{
    None,
    Curves,
    Cube,
    CurvesAndCube,
};

TableKind TableKindOf(const StoredLook& look) noexcept;

struct RowFunctions
{
    RowFunction* eightBit;
    RowFunction* floats;
    RowFunction* linear;
};

RowFunctions RowFunctionsOf(CdlMode mode, TableKind tables) noexcept;
