// Names the application that prints and records it in the PrintTicket's private feature
// ns0000:JobZXApplicationTracking, so that the printer can tell which program a job came from.
#pragma once

#include "printschema/string_buffer.h"

#include <string>

class VPrintTicketHandler;

// The longest application name recorded; longer file descriptions are cut.
inline constexpr size_t kMaxApplicationName = 259;

// The name of the printing application as the ticket records it: from the spooler's client for
// the print host of 32-bit applications, from the loaded modules or command line for a few known
// hosts, otherwise from the executable's file description; "Unknown" when nothing tells. Made a
// valid option name (MakeOptionName). Throws VUtilException or std::bad_alloc only when memory
// runs out.
VStringBuffer DetectPrintingApplication();

// The same name, found once per process and kept: a process runs one program. Only the print host
// of 32-bit applications serves several, one job at a time, so there the name is found again
// whenever the spooler names another client. Replacing the inspection table forgets the name.
std::wstring PrintingApplicationName();

// Makes an application name the local part of a valid XML name, which the option's name must be
// for the host to accept the ticket: spaces and every other character that an XML name cannot
// hold become "_", and "_" goes in front of a first character that cannot start a name. The
// result is cut to kMaxApplicationName characters.
void MakeOptionName(VStringBuffer& name);

// When the ticket carries ns0000:JobZXApplicationTracking, replaces it by one whose single option
// is ns0000: + the application name. Failures leave the ticket as it is; nothing is thrown.
void RecordPrintingApplication(VPrintTicketHandler& ticket) noexcept;
