// SPDX-License-Identifier: Apache-2.0
//
// What the texts of the benchmarks consist of.
#ifndef BENCH_TEXTS_H
#define BENCH_TEXTS_H

#include <string>
#include <vector>

namespace bench
{

// Mail subjects, letters and directory lines, in pieces small enough for the shortest texts.
inline const std::vector<std::string> kSubjects = {
    "Re: ", "会議",   "資料の", "送付に",     "ついて",   " (7/15 10:00) ", "[",       "重要",
    "] ",   "サーバ", "移行の", "お知らせと", "ご確認の", "お願い",         " No.204 "};
inline const std::vector<std::string> kJapaneseLetter = {
    "佐藤様、", "第3",    "四半期の", "売上",   "報告書を",     "お送り",   "します。",
    "ご確認の", "ほど、", "よろしく", "お願い", "いたします。", "札幌支店", " TEL 011-123-4567 "};
inline const std::vector<std::string> kDirectory = {"佐藤 ", "健一, ", "札幌, ", "ﾀﾅｶ ",
                                                    "ｹｲｺ, ", "東京, ", "内線 ",  "204; "};
inline const std::vector<std::string> kLetter = {
    "Sehr ",          "geehrter ",  "Herr ",  "Müller, ", "das ",     "Büro ", "in ",
    "Zürich ",        "bestätigt ", "den ",   "Termin. ", "Réunion ", "du ",   "comité: ",
    "procès-verbal ", "et ",        "ordre ", "du ",      "jour. "};
inline const std::vector<std::string> kGreekLetter = {
    "Αγαπητέ ", "κύριε ",   "Παπαδόπουλε, ", "σας ", "στέλνω ",
    "την ",     "πρόταση ", "για ",          "το ",  "συμβόλαιο "};
// Four scripts, and no letter (as the final sigma) that its capital letter does not lead back to.
inline const std::vector<std::string> kMixed = {"Sehr ",    "Müller, ", "Москва, ", "договор ",
                                                "Αθήνα ",   "πρόταση ", "会議の",   "資料 ",
                                                "Réunion ", "東京, ",   "Order ",   "204 "};
inline const std::vector<std::string> kMinutes = {
    "The ", "meeting ", "was ",    "opened ", "at ",        "noon. ", "Item ",   "3: ",
    "the ", "budget ",  "of the ", "new ",    "building, ", "see ",   "No. 47. "};

} // namespace bench

#endif
