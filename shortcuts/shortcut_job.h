// Between shortcuts and the print job: the job's current settings as the collection compares
// them, applying one setting of a shortcut to the core driver's item, taking a job setting over
// into the pending shortcut, and the pending shortcut's making and picture.
#pragma once

#include "shortcuts/shortcut_collection.h"

namespace zx {

// The job's current option index of every all-settings feature, read through the core helper
// (PaperSize as the paper index). Features the core driver lacks are left out.
JobSettings CurrentJobSettings(const VUIProperties& properties, const VUIPSItem& shortcuts);

// The core driver's item selection for a combo selection of setting position k: the driver
// option (ToDriverOption); for PaperSize, the position in the PaperSize item of the paper with
// that index, found by display name.
LONG ItemSelectionForSetting(const VUIPSItem& shortcuts, const PrintShortcutRecord& record, size_t position,
                             int32_t comboSelection, const VUIProperties& properties);

// Applies setting position k of a record, chosen at a combo selection, to the job: the feature's
// item takes the translated selection (DocumentNUp is also kept as the private block's N-up
// index) and is committed.
//   S_OK or the commit's result     applied
//   S_FALSE                         the core driver has no item for the feature; nothing done
//   E_INVALIDARG                    no such position, or a selection outside the item's options
HRESULT ApplyShortcutSetting(const VUIPSItem& shortcuts, const PrintShortcutRecord& record, size_t position,
                             int32_t comboSelection, const VUIProperties& properties);

// Takes the job's option of setting position k over into the pending shortcut: it becomes the
// shortcut's setting, and the result is the combo selection that shows it. -1, with the shortcut
// unchanged, when the shortcut does not offer the job's option or the job has a custom paper
// size in a PaperSize setting (never taken over).
int32_t TakeOverJobSetting(const VUIPSItem& shortcuts, PrintShortcutRecord& pending, size_t position,
                           bool jobHasCustomPaperSize);

// The picture of a built-in shortcut once a combo box of the page changed it: 148 -> 155,
// 149 -> 157, 151 -> 158, 152 -> 159, 153 -> 160, any other -> 154.
int32_t ModifiedShortcutBitmap(int32_t builtInBitmap) noexcept;
// The same when the change came from the standard property sheet, where a changed 153 (factory
// defaults) becomes the general picture: 148 -> 155, 149 -> 157, 151 -> 158, 152 -> 159, other -> 154.
int32_t StandardSheetModifiedBitmap(int32_t builtInBitmap) noexcept;

// A copy of record `sourceIndex` that is to become the pending shortcut: neither built-in,
// stored nor in the printer's data, and listed. A copy of a built-in shortcut gets its modified
// picture and the source's index as base index; a copy of a user shortcut keeps both.
PrintShortcutRecord PendingShortcutFrom(const PrintShortcutRecord& source, int32_t sourceIndex);

}  // namespace zx
