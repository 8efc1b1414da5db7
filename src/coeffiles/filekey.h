#pragma once

namespace seamrevision
{

/// Both the key and the initialisation vector of every coefficient file. Part of the file format.
constexpr char fileKey[] = "qalvetor";

} // namespace seamrevision
