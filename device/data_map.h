// The device data map: an XML file beside the driver that lists, per protocol, the items the
// device is asked for. Its evaluation yields the item strings in the order they are asked.
#pragma once

#include <string>
#include <vector>

namespace zx {

// Appends to items the item strings of the map for the protocol the device speaks: fixed items,
// then data items, then (for "OID") sequence items. True when there are data or sequence items
// to ask for; false when the file cannot be read, the protocol is unknown or the map has no
// fixed item.
bool EvaluateDataMap(std::vector<std::wstring>& items, const std::wstring& dataMapPath, const std::wstring& protocol);

}  // namespace zx
