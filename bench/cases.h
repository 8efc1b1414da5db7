#pragma once

/// The cases of the suite, one function a file; main() registers them in the order of the figures.
namespace bench
{

void registerSingleLayerCases();
void registerLayeredCases();
void registerBlendCases();
void registerDumpCases();
void registerCipherCases();
void registerMemoryCases();

} // namespace bench
