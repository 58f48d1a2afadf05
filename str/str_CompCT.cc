// SPDX-License-Identifier: Apache-2.0
//
// The case table compiler: from a source file to a record, and to the compiled file.  Also the two
// operations on a record's arrays, which loader, registry and work area use too.
#include "str/core/case_record.h"
#include "str/core/closing.h"
#include "str/core/exclusive.h"
#include "str/core/frame.h"
#include "str/core/prepared.h"

#include <platform/enc.h>
#include <platform/ext.h>
#include <platform/mdc.h>
#include <platform/os.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_CompCT";

// The scanner, under the lock of the case tables: one line, the place in it, and the number of
// lines read so far.
constexpr int kLineSize = 81;
char theLine[kLineSize];
char *theScan = theLine;
int theLineNumber;

constexpr char kTemporary[] = "~/toupper/casetemp";

constexpr size_t kNameSize = sizeof CaseTableRecord::CharSetName;
constexpr size_t kSideSize = 20;
constexpr int kMostSideBytes = 2;

// ---- Words ---------------------------------------------------------------------------------

// Part of the line, before its NUL.
struct Word {
    const char *text; // null at the end of the file
    size_t length;
};

Word From(const Word &word, size_t offset) { return {word.text + offset, word.length - offset}; }

bool IsSpace(char ch) { return std::isspace(static_cast<unsigned char>(ch)) != 0; }

char *SkipSpace(char *at)
{
    while (IsSpace(*at))
        ++at;
    return at;
}

// Reads the next line that is neither blank nor a comment; false at the end of the file.
bool NextSignificantLine(FILE *stream)
{
    while (os_fgets(theLine, kLineSize, stream) != nullptr) {
        ++theLineNumber;
        const char first = *SkipSpace(theLine);
        if (first != '\0' && first != '#')
            return true;
    }
    return false;
}

// The next word, on the current line or a later one.  `freshLine` skips the rest of the current
// line; `sameLine` requires a word on it.
Word NextWord(FILE *stream, bool freshLine, bool sameLine)
{
    if (freshLine) {
        theLine[0] = '\0';
        theScan = theLine;
    }
    theScan = SkipSpace(theScan);
    if (*theScan == '\0') {
        if (sameLine)
            frame::Raise(kSource, STR_ESC_WORD_MISSING);
        if (!NextSignificantLine(stream))
            return {nullptr, 0};
        theScan = SkipSpace(theLine);
    }
    const char *const word = theScan;
    while (*theScan != '\0' && !IsSpace(*theScan))
        ++theScan;
    return {word, static_cast<size_t>(theScan - word)};
}

// Whether a word is the keyword or an abbreviation of it.
bool Matches(const Word &word, const char *keyword)
{
    return word.length <= std::strlen(keyword) && std::memcmp(word.text, keyword, word.length) == 0;
}

// ---- The header ----------------------------------------------------------------------------

void ParseCharSetLine(FILE *stream, char (&name)[kNameSize])
{
    Word word = NextWord(stream, true, false);
    if (word.text == nullptr)
        frame::Raise(kSource, STR_ESC_NO_HEADER);
    if (!Matches(word, "TOUPPER"))
        frame::Raise(kSource, STR_ESC_NOT_TOUPPER);
    word = NextWord(stream, false, true);
    if (!Matches(word, "CHARSET"))
        frame::Raise(kSource, STR_ESC_NOT_CHARSET);
    word = NextWord(stream, false, true);
    if (word.length >= kNameSize)
        frame::Raise(kSource, STR_ESC_NAME_TOO_LONG);
    for (size_t i = 0; i < word.length; ++i)
        name[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(word.text[i])));
    name[word.length] = '\0';
}

void EnsureByteMap(CaseTableRecord *record)
{
    if (record->pByteMap != 0)
        return;
    reference::Reserve();
    auto *const map = static_cast<uint8_t *>(os_malloc(kByteMapSize));
    for (size_t byte = 0; byte < kByteMapSize; ++byte)
        map[byte] = static_cast<uint8_t>(byte);
    record->pByteMap = reference::Make(map, 0);
}

void ReadCaseHeader(FILE *stream, CaseTableRecord *record)
{
    char name[kNameSize];
    ParseCharSetLine(stream, name);
    mdc_strlcpy(record->CharSetName, name, kNameSize);
    EnsureByteMap(record);
}

// ---- Rules ---------------------------------------------------------------------------------

// The rest of a word or, when nothing is left of it, the next word on the line.
Word RestOrNextWord(FILE *stream, const Word &word, size_t offset)
{
    return offset < word.length ? From(word, offset) : NextWord(stream, false, true);
}

void CopySide(const Word &side, char (&out)[kSideSize])
{
    std::memcpy(out, side.text, side.length);
    out[side.length] = '\0';
}

// Splits the next rule into its sides; false at the end of the file.
bool SplitRule(FILE *stream, bool first, char (&left)[kSideSize], char (&right)[kSideSize])
{
    const Word word = NextWord(stream, first, false);
    if (word.text == nullptr)
        return false;
    const Word leftSide = {word.text, std::min(word.length, std::strcspn(word.text, "=<-"))};
    if (leftSide.length == 0)
        frame::Raise(kSource, STR_ESC_NO_LEFT_SIDE);
    if (leftSide.length >= kSideSize)
        frame::Raise(kSource, STR_ESC_LEFT_TOO_LONG);

    const Word operation = RestOrNextWord(stream, word, leftSide.length);
    const size_t operators = std::min(operation.length, std::strspn(operation.text, "<>=-"));
    if (operators == 0)
        frame::Raise(kSource, STR_ESC_NO_OPERATOR);

    const Word rightSide = RestOrNextWord(stream, operation, operators);
    if (rightSide.length == 0)
        frame::Raise(kSource, STR_ESC_NO_RIGHT_SIDE);
    if (rightSide.length >= kSideSize)
        frame::Raise(kSource, STR_ESC_RIGHT_TOO_LONG);

    CopySide(leftSide, left);
    CopySide(rightSide, right);
    return true;
}

struct Side {
    uint8_t bytes[kMostSideBytes]; // the second is 0 when there is only one
    int length;
};

// The bytes that a side of a rule means.
Side Decode(const char *text, int codeWhenEmpty, int codeWhenLong, int line = __builtin_LINE())
{
    int length = 0;
    const unsigned char *const bytes = enc_ConvertLongEncodedStr(text, ENC_BYTES, &length);
    if (length < 1)
        frame::Raise(kSource, codeWhenEmpty, line);
    if (length > kMostSideBytes)
        frame::Raise(kSource, codeWhenLong, line);
    return {{bytes[0], length == 1 ? uint8_t{0} : bytes[1]}, length};
}

void SetByteMapRule(CaseTableRecord *record, uint8_t byte, uint8_t upper)
{
    reference::Resolve<uint8_t>(record->pByteMap)[byte] = upper;
}

void AddExpansionRule(CaseTableRecord *record, uint8_t byte, const Side &upper)
{
    SetByteMapRule(record, byte, 0);
    *AddEntry<PairRule>(&record->pExpansions, &record->MaxExpansions,
                        &record->NumExpansions) = {byte, {upper.bytes[0], upper.bytes[1]}};
}

LeadEntry *AddLeadEntry(CaseTableRecord *record, uint8_t leadByte)
{
    auto *const lead = AddEntry<LeadEntry>(&record->pLeads, &record->MaxLeads, &record->NumLeads);
    lead->LeadByte = leadByte;
    return lead;
}

LeadEntry *FindLeadEntry(const CaseTableRecord *record, uint8_t leadByte)
{
    auto *const leads = reference::Resolve<LeadEntry>(record->pLeads);
    for (int32_t i = 0; i < record->NumLeads; ++i)
        if (leads[i].LeadByte == leadByte)
            return &leads[i];
    return nullptr;
}

void AddTrailRule(CaseTableRecord *record, const Side &pair, const Side &upper)
{
    SetByteMapRule(record, pair.bytes[0], 0);
    LeadEntry *lead = FindLeadEntry(record, pair.bytes[0]);
    if (lead == nullptr)
        lead = AddLeadEntry(record, pair.bytes[0]);
    *AddEntry<PairRule>(&lead->pTrails, &lead->MaxTrails,
                        &lead->NumTrails) = {pair.bytes[1], {upper.bytes[0], upper.bytes[1]}};
}

void ReadRules(FILE *stream, CaseTableRecord *record)
{
    char leftText[kSideSize];
    char rightText[kSideSize];
    for (bool first = true; SplitRule(stream, first, leftText, rightText); first = false) {
        const Side left = Decode(leftText, STR_ESC_NO_LEFT_SIDE, STR_ESC_LEFT_TOO_LONG);
        const Side right = Decode(rightText, STR_ESC_NO_RIGHT_SIDE, STR_ESC_RIGHT_TOO_LONG);
        if (left.length == 2)
            AddTrailRule(record, left, right);
        else if (right.length == 2)
            AddExpansionRule(record, left.bytes[0], right);
        else
            SetByteMapRule(record, left.bytes[0], right.bytes[0]);
    }
}

// ---- The compiled file ---------------------------------------------------------------------

// References in the file are offsets, so every process writes the same bytes.  `end` is where the
// arrays before this one end.
CaseTableRef Place(CaseTableRef array, size_t size, size_t *end)
{
    if (array == 0)
        return 0;
    const size_t offset = *end;
    *end += size;
    return static_cast<CaseTableRef>(offset);
}

void WriteArray(FILE *stream, CaseTableRef array, size_t size)
{
    if (array != 0)
        os_fwrite(reference::Resolve(array), 1, size, stream);
}

// `end` is where the lead entries end.
void WriteLeads(FILE *stream, const CaseTableRecord *record, size_t end)
{
    if (record->pLeads == 0)
        return;
    LeadEntry leads[UCHAR_MAX + 1]; // at most one for each byte
    const size_t size = ArraySize<LeadEntry>(record->NumLeads);
    std::memcpy(leads, reference::Resolve(record->pLeads), size);
    for (int32_t i = 0; i < record->NumLeads; ++i)
        leads[i].pTrails = Place(leads[i].pTrails, ArraySize<PairRule>(leads[i].NumTrails), &end);
    os_fwrite(leads, 1, size, stream);
}

void WriteCaseTableFile(FILE *stream, const CaseTableRecord *record)
{
    const CaseTableHeader header = {CASE_TABLE_MAGIC, CASE_TABLE_VERSION, 0, {}};
    const size_t expansionsSize = ArraySize<PairRule>(record->NumExpansions);
    CaseTableRecord placed = *record;
    size_t end = sizeof header + sizeof placed;
    placed.pByteMap = Place(record->pByteMap, kByteMapSize, &end);
    placed.pExpansions = Place(record->pExpansions, expansionsSize, &end);
    placed.pLeads = Place(record->pLeads, ArraySize<LeadEntry>(record->NumLeads), &end);
    os_fwrite(&header, 1, sizeof header, stream);
    os_fwrite(&placed, 1, sizeof placed, stream);
    WriteArray(stream, record->pByteMap, kByteMapSize);
    WriteArray(stream, record->pExpansions, expansionsSize);
    WriteLeads(stream, record, end);
    const auto *const leads = reference::Resolve<LeadEntry>(record->pLeads);
    for (int32_t i = 0; i < record->NumLeads; ++i)
        WriteArray(stream, leads[i].pTrails, ArraySize<PairRule>(leads[i].NumTrails));
}

// Writes the compiled file under another name first, so a reader finds the whole file or none.
void WriteCompiledTable(const char *compiledName, const CaseTableRecord *record)
{
    if (ext_GetVornithGid() != getegid())
        return;
    FILE *stream = nullptr;
    mode_t mask = 0;
    bool maskIsOurs = false;
    frame::Protect(
        kSource, frame::Clear(),
        [&] {
            mask = os_umask(0);
            maskIsOurs = true;
            const int descriptor = os_open(kTemporary, O_WRONLY | O_CREAT | O_TRUNC, 0664);
            stream = os_fdopen(descriptor, "w");
            if (ext_ChownToVornith(kTemporary) != 0)
                frame::Raise(kSource, STR_ESC_NOT_GIVEN);
            os_umask(mask);
            maskIsOurs = false;
            WriteCaseTableFile(stream, record);
            os_fclose(stream);
            stream = nullptr;
            os_rename(kTemporary, compiledName);
        },
        [&] {
            if (maskIsOurs)
                os_umask(mask);
            if (stream != nullptr)
                Abandon(stream);
        });
}

// ---- Records and their arrays --------------------------------------------------------------

size_t BlockSize(int32_t elements, uint32_t elementSize)
{
    return static_cast<size_t>(elements) * elementSize;
}

void ReleaseArray(CaseTableRef *array, int32_t *capacity, int32_t *used)
{
    reference::Release(array);
    *capacity = *used = 0;
}

bool Compile(const char *sourceName, const char *compiledName, CaseTableRecord *record)
{
    FILE *source = nullptr;
    return frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY),
        [&] {
            theLineNumber = 0;
            source = os_fopen(sourceName, "r");
            ReadCaseHeader(source, record);
            ReadRules(source, record);
            Abandon(source);
            source = nullptr;
            WriteCompiledTable(compiledName, record);
        },
        [&] {
            str_FreeCTEntry(record);
            if (source != nullptr)
                Abandon(source);
            er_EnhLogMsg(3, 3, STR_LOG_NOT_COMPILED, "%s%d", sourceName, theLineNumber, 0);
        });
}

} // namespace

void *str_AllocEntry(void *block, int32_t *capacity, int32_t *used, uint32_t elementSize,
                     int32_t step, int16_t *index)
{
    if (*capacity == 0) {
        block = os_malloc(BlockSize(step, elementSize));
        *capacity = step;
        *used = 0;
    }
    if (*used >= kMostEntries)
        frame::Raise(kSource, OS_ESC_MEMORY);
    if (*used >= *capacity) {
        block = os_realloc(block, BlockSize(*capacity + step, elementSize));
        *capacity += step;
    }
    *index = static_cast<int16_t>((*used)++);
    return block;
}

void str_FreeCTEntry(CaseTableRecord *record)
{
    exclusive::Enter();
    prepared::Release(*record);
    if (record->pByteMap != 0)
        reference::Release(&record->pByteMap);
    if (record->pExpansions != 0)
        ReleaseArray(&record->pExpansions, &record->MaxExpansions, &record->NumExpansions);
    if (record->pLeads != 0) {
        auto *const leads = reference::Resolve<LeadEntry>(record->pLeads);
        for (int32_t i = 0; i < record->NumLeads; ++i)
            if (leads[i].pTrails != 0)
                ReleaseArray(&leads[i].pTrails, &leads[i].MaxTrails, &leads[i].NumTrails);
        ReleaseArray(&record->pLeads, &record->MaxLeads, &record->NumLeads);
    }
    exclusive::Leave();
    std::memset(record, 0, sizeof *record);
}

int str_CompileCaseTable(const char *sourceName, const char *compiledName, CaseTableRecord *record)
{
    frame::TraceEntry();
    bool compiled = false;
    exclusive::Run(kSource, [&] { compiled = Compile(sourceName, compiledName, record); });
    frame::TraceExit();
    return compiled ? 1 : 0;
}
