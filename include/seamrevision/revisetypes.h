#pragma once

/// The enumerations that cross the interface. Every value is fixed: hosts store and compare them
/// as plain ints. Values other than the named ones do not occur, except where said.

/// What a revision or one of its steps came to.
enum enum_ErrCodeType : int
{
    ErrCode_Success = 0,                  ///< done, or the seam was skipped
    ErrCode_Failed = 3,                   ///< a failed check: null pointer, missing key, bad index
    ErrCode_CorrectedAreaEmpty = 1796,    ///< no corrected partition, or the screen has no pixel
    ErrCode_SaveCombineCoefFailed = 1797, ///< a partition's coefficient file was not saved
    ErrCode_ReadAreaCoefFailed = 1800,    ///< a partition's coefficients could not be read
    ErrCode_IndexOutOfRange = 1804,       ///< a partition does not fit the whole-screen table
    ErrCode_ReadScreenDbFailed = 3341     ///< the database could not list corrected partitions
};

/// Where the second partition of a seam lies.
enum enum_ReviseDirection : int
{
    ReviseDirection_Horizontal = 0, ///< right of the first: numbers k and k + 1
    ReviseDirection_Vertical = 1    ///< below the first: numbers k and k + grid columns
};

/// How revised coefficients are delivered. Every value other than the named one means "in the
/// whole-screen table of the result only".
enum enum_ScreenType : int
{
    ScreenType_PartitionFile = 1 ///< also as encrypted coefficient files, one set per partition
};

/// Whether the screen database holds coefficients for a partition.
enum enum_subAreaStateType : int
{
    SubAreaState_NotCorrected = 0, ///< no: the partition is reset to identity
    SubAreaState_Corrected = 2     ///< yes: the partition is read, revised and saved
};
