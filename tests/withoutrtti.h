#pragma once

#include <seamrevision/partitionmerge.h>

#include <memory>

/// A host's engine, built without run-time type information, that counts the results it sends.
std::unique_ptr<PartitionMerge> engineWithoutRtti(int &sent);
