#include "peer/area_texts.h"

#include <array>

namespace updown::peer {

namespace {

using Text = std::string_view;

constexpr std::array<Text, 10> kEnglishPeople{
    "Claire Béranger <c.beranger@northgate-survey.example>",
    "Jürgen Haas <j.haas@haas-vermessung.example>",
    "Margaret Osei <m.osei@harbourtrust.example>",
    "Tom Whitfield <tom.whitfield@northgate-survey.example>",
    "Inês Carvalho <ines@carvalho-arquitectos.example>",
    "Dr. Paul Østergaard <paul.o@fjordlab.example>",
    "Site Office Elmbridge <office@elmbridge-site.example>",
    "Ravi Menon <r.menon@harbourtrust.example>",
    "Accounts Receivable <accounts@millrace-print.example>",
    "Zoë van Houten <z.vanhouten@millrace-print.example>",
};

constexpr std::array<Text, 14> kEnglishSubjects{
    "Survey drawings, east quay, second issue",
    "Quarterly figures for the board",
    "Elmbridge: revised floor plans and door schedule",
    "Invoice 2008-1147 (€ 4,280.00)",
    "Photographs from Tuesday's site visit",
    "Minutes of the steering group",
    "Café refit – samples and price list",
    "Water samples: results for stations 4 to 9",
    "Draft contract for your remarks",
    "Printing proofs, please check by Friday",
    "Re: missing pages in the tender",
    "Translation of chapters 3 and 4",
    "Monthly backup of the shared folder",
    "Soil report and laboratory certificates",
};

constexpr std::array<Text, 7> kEnglishNotes{
    "Please find the files attached.\nKind regards\nClaire",
    "Dear all,\n\nthe second issue replaces the first one; please destroy the old prints.\n"
    "Sheets 12 to 15 follow next week.\n\nTom",
    "As agreed on the phone. The amount is € 4,280.00, payable within 30 days.\n"
    "Questions go to accounts, not to me.",
    "Jürgen,\nthe levels at the east quay differ by 4 cm from last year's. Could you check the "
    "benchmark before we go on? I have put both lists into the package so that you can compare "
    "them line by line.\n\nThanks, Margaret",
    "For your information.",
    "1. Open the drawing first.\n2. Compare it with the table.\n3. Send your remarks to the site "
    "office, with the sheet number.\n\nWe need them by Thursday noon; what comes later goes into "
    "the third issue.",
    "",
};

constexpr std::array<Text, 16> kEnglishFiles{
    "East quay survey - second issue.pdf",
    "figures_q3.xls",
    "readme.txt",
    "IMG_0412.png",
    "site plan A1 (rev C).pdf",
    "samples.tar.gz",
    "door-schedule.csv",
    "Minutes 4 November.doc",
    "LICENCE",
    "résumé of remarks.txt",
    "contract draft v7.rtf",
    "proofs.zip",
    "Comparison of the levels measured along the east quay in the years 2006, 2007 and 2008 with "
    "all stations and remarks.xls",
    "station_09.dat",
    "cover letter.htm",
    "photo album.jpg",
};

constexpr std::array<Text, 8> kSimplifiedPeople{
    "林晓梅 <lin.xiaomei@qinghe-sheji.example>",    "陈志强 <chen.zhiqiang@donghai-cehui.example>",
    "王雅琴 <wang.yaqin@qinghe-sheji.example>",     "工程部 <gongcheng@donghai-cehui.example>",
    "刘建国 <liu.jianguo@beichen-yinshua.example>", "赵文博 <zhao.wenbo@beichen-yinshua.example>",
    "Helen Marsh <h.marsh@harbourtrust.example>",   "财务室 <caiwu@qinghe-sheji.example>",
};

constexpr std::array<Text, 10> kSimplifiedSubjects{
    "东码头测量图纸(第二版)",
    "第三季度财务报表",
    "会议纪要:十一月四日",
    "水质检测结果,四号至九号站",
    "合同草案,请提出修改意见",
    "印刷样张,请于周五前确认",
    "现场照片",
    "发票 2008-1147",
    "第三章、第四章译文",
    "Re: 投标文件缺页",
};

constexpr std::array<Text, 6> kSimplifiedNotes{
    "您好,\n附件请查收。\n此致\n敬礼",
    "各位同事:\n\n第二版图纸代替第一版,请销毁旧图。\n第十二至十五页下周寄出。\n\n林晓梅",
    "按电话商定的内容发送。金额为人民币四千二百八十元,三十天内付清。\n有问题请联系财务室。",
    "陈工:\n东码头的标高与去年相差四厘米,请在继续之前核对水准点。两份数据都在这个包里,"
    "便于逐行比较。\n谢谢!",
    "供参考。",
    "",
};

constexpr std::array<Text, 14> kSimplifiedFiles{
    "东码头测量图.pdf",
    "财务报表 2008 第三季度.xls",
    "说明.txt",
    "现场照片01.png",
    "会议纪要.doc",
    "样品数据.tar.gz",
    "合同草案 第七版.rtf",
    "印刷样张.zip",
    "readme.txt",
    "门窗表.csv",
    "二〇〇六年至二〇〇八年东码头各测站标高对照表及全部说明和备注.xls",
    "station_09.dat",
    "封面",
    "现场照片02.jpg",
};

constexpr std::array<Text, 8> kTraditionalPeople{
    "林曉梅 <lin.hsiaomei@chingho-design.example>",
    "陳志強 <chen.chihchiang@tunghai-survey.example>",
    "王雅琴 <wang.yachin@chingho-design.example>",
    "工程部 <engineering@tunghai-survey.example>",
    "劉建國 <liu.chienkuo@peichen-print.example>",
    "趙文博 <chao.wenpo@peichen-print.example>",
    "Helen Marsh <h.marsh@harbourtrust.example>",
    "財務室 <finance@chingho-design.example>",
};

constexpr std::array<Text, 10> kTraditionalSubjects{
    "東碼頭測量圖紙(第二版)",
    "第三季財務報表",
    "會議紀錄:十一月四日",
    "水質檢測結果,四號至九號站",
    "合約草案,請提出修改意見",
    "印刷樣張,請於週五前確認",
    "現場照片",
    "發票 2008-1147",
    "第三章、第四章譯文",
    "Re: 投標文件缺頁",
};

constexpr std::array<Text, 6> kTraditionalNotes{
    "您好,\n附件請查收。\n敬祝 時祺",
    "各位同事:\n\n第二版圖紙取代第一版,請銷毀舊圖。\n第十二至十五頁下週寄出。\n\n林曉梅",
    "依電話商定的內容寄送。金額為四千二百八十元,三十天內付清。\n有問題請聯絡財務室。",
    "陳工程師:\n東碼頭的標高與去年相差四公分,請在繼續之前核對水準點。兩份資料都在這個包裡,"
    "方便逐行比較。\n謝謝!",
    "供參考。",
    "",
};

constexpr std::array<Text, 14> kTraditionalFiles{
    "東碼頭測量圖.pdf",
    "財務報表 2008 第三季.xls",
    "說明.txt",
    "現場照片01.png",
    "會議紀錄.doc",
    "樣品資料.tar.gz",
    "合約草案 第七版.rtf",
    "印刷樣張.zip",
    "readme.txt",
    "門窗表.csv",
    "二〇〇六年至二〇〇八年東碼頭各測站標高對照表及全部說明和備註.xls",
    "station_09.dat",
    "封面",
    "現場照片02.jpg",
};

constexpr AreaTexts kEnglish{"WINDOWS-1252", kEnglishPeople, kEnglishSubjects, kEnglishNotes,
                             kEnglishFiles};
constexpr AreaTexts kSimplified{"GBK", kSimplifiedPeople, kSimplifiedSubjects, kSimplifiedNotes,
                                kSimplifiedFiles};
constexpr AreaTexts kTraditional{"BIG5", kTraditionalPeople, kTraditionalSubjects,
                                 kTraditionalNotes, kTraditionalFiles};

}  // namespace

const AreaTexts& TextsOf(int languageId) {
  switch (languageId) {
    case 2052:
      return kSimplified;
    case 1028:
      return kTraditional;
    default:
      return kEnglish;
  }
}

}  // namespace updown::peer
