// SPDX-License-Identifier: Apache-2.0
#include "tools/tables.h"

#include "tools/input.h"

#include <platform/ccs.h>
#include <platform/os.h>
#include <str/case.h>

#include <map>

namespace strtool
{
namespace
{

// Why the set has no case table; empty if it has one, or has no case.
std::string FindFault(const CSDescriptor &cs)
{
    CaseTableRecord *table;
    if ((ccs_GetCSFlags(&cs) & CS_FLAG_CASE) == 0)
        return "";
    const std::string name = ccs_GetCSName(&cs);
    const std::string file = "toupper/" + std::to_string(ccs_GetCSNumber(&cs));
    if (os_fexists(("~/" + file + ".s").c_str()) == 0 &&
        os_fexists(("~/" + file + ".b").c_str()) == 0)
        return "there is no case table for " + name + " in the service home " + os_GetHome() +
               ": 'strtool init-home' makes a home, and STR_HOME says where it is";
    if (str_GetTouTable(&cs, &table) == 0)
        return "the case table for " + name + ", " + os_GetHome() + "/" + file +
               ".s, cannot be used";
    return "";
}

std::map<uint16_t, std::string> theFaults; // by set: each is looked up once

void DemandTable(const CSDescriptor &cs)
{
    const auto [fault, isNew] = theFaults.try_emplace(cs.csNum);
    if (isNew)
        fault->second = FindFault(cs);
    if (!fault->second.empty())
        throw TextError(fault->second);
}

} // namespace

void DemandTables(const std::string &text, const CSDescriptor &cs)
{
    DemandTable(cs);
    int count;
    const CSSegment *segment = ccs_GetAllStrs(&cs, text.c_str(), -1, &count);
    for (; segment->kind != CS_SEG_END; ++segment)
        DemandTable({segment->kind, cs.escMode});
}

} // namespace strtool
