// The groups of checks of plug-ins; the table in plug_in_groups.cpp says what each asks.
#pragma once

namespace GlazelHost
{

class Check;

// What no host could live with throws HostError.
void CheckPlugInExports(Check& check);
void CheckPlugInFactory(Check& check);
void CheckPlugInIdentity(Check& check);
void CheckPlugInAggregation(Check& check);
void CheckPlugInUnload(Check& check);
void CheckPlugInThreads(Check& check);

void CheckEffectProperties(Check& check);
void CheckEffectSafety(Check& check);
void CheckEffectPages(Check& check);
void CheckEffectPresets(Check& check);
void CheckEffectExtension(Check& check);
void CheckEffectSetup(Check& check);
void CheckPageCalls(Check& check);
void CheckPageWindow(Check& check);

void CheckEffectState(Check& check);
void CheckEffectStorage(Check& check);
void CheckEffectStreams(Check& check);
void CheckEffectHostileState(Check& check);
void CheckEffectKeyframes(Check& check);
void CheckEffectExchange(Check& check);

void CheckEffectFrames(Check& check);
void CheckEffectAutomatedFrames(Check& check);
void CheckEffectFailingSurfaces(Check& check);

} // namespace GlazelHost
