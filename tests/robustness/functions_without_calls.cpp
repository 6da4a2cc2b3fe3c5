/// The functions that make no system call, apart from allocating memory. A part of
/// `failing_calls_test`.
#if defined(__linux__) && defined(__x86_64__)

#include <gtest/gtest.h>
#include <tokenizer.h>
#include <zn_datetime.h>
#include <zn_daylength.h>
#include <zn_error.h>
#include <zn_file.h>
#include <zn_ip.h>
#include <zn_moonphase.h>
#include <zn_output.h>
#include <zn_platform.h>
#include <zn_readfile.h>
#include <zn_readxml.h>
#include <zn_setcfg.h>
#include <zn_str.h>
#include <zn_writefile.h>
#include <zn_xmlparser.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "fault_injection.h"
#include "sanitizers.h"
#include "stored_xml.h"

namespace {

using namespace zn_lib;

class SilentCalls : public FaultInjection {};

/// Functions, as `exports.txt` names them without their arguments, and calls of all of them.
struct Silent {
  std::vector<std::string> functions;
  std::function<void()> run;
};

const char* const kText = "A text, longer than any text that is stored within its object";
constexpr unsigned long long kJulian = 63845237229000ULL;

std::vector<Silent> texts() {
  return {
      {{"leftTrim", "rightTrim", "allTrim"},
       [] {
         leftTrim("  x");
         rightTrim("x  ");
         allTrim("  x  ");
       }},
      {{"stringToUpper", "stringToLower"},
       [] {
         stringToUpper(kText);
         stringToLower(kText);
       }},
      {{"leftPad", "rightPad"},
       [] {
         leftPad(kText, 100, '.');
         rightPad(kText, 100, '.');
       }},
      {{"stringToBool", "stringToDouble", "isNumber", "percentString"},
       [] {
         stringToBool("True");
         stringToDouble("2e3");
         stringToDouble("x");
         isNumber("-1,234.56");
         percentString(1, 3, 2);
       }},
      {{"replicateChar", "replicateString", "replaceChar", "removeChar", "replaceString"},
       [] {
         replicateChar('x', 50);
         replicateString("xyz", 10);
         replaceChar(kText, 'e', 'o');
         removeChar(kText, 'e');
         replaceString(kText, "text", "word");
       }},
      {{"removeQuotes", "inQuotes", "findStrings"},
       [] {
         removeQuotes("'x'");
         inQuotes(kText, '\'');
         findStrings(kText, {"word", "text"});
       }},
      {{"String::String"}, [] { const String copy((std::string(kText))); }},
      {{"vector_key::operator()", "map_key::operator()", "error_order::operator()"},
       [] {
         vector_key()("a", "b");
         map_key<std::string>()("a", "b");
         error_order()(1, 2);
       }},
      {{"Tokenizer::Tokenizer", "Tokenizer::split", "Tokenizer::splitMulti",
        "Tokenizer::sortTokens", "Tokenizer::getToken"},
       [] {
         Tokenizer(kText, " ,");
         Tokenizer tokenizer;
         tokenizer.split(kText, " ,");
         tokenizer.splitMulti(kText, ",? ");
         tokenizer.sortTokens();
         tokenizer.getToken(1);
       }},
      {{"setDecimal", "setHexadecimal", "setOctal"},
       [] {
         std::ostringstream out;
         out << setDecimal << 1 << setHexadecimal << 2 << setOctal << 3;
       }},
  };
}

std::vector<Silent> names() {
  return {
      {{"splitFileName", "stripExtension", "createFileName", "addEndSlash", "checkHomePath"},
       [] {
         std::string name = "~/dir/name.txt";
         splitFileName(name);
         stripExtension(name);
         createFileName("~/dir", "name", "txt");
         addEndSlash(name);
         checkHomePath(name);
       }},
      {{"FileName::FileName", "FileName::~FileName", "FileName::setFileName",
        "FileName::getFileName", "ReadFile::ReadFile", "WriteFile::WriteFile"},
       [] {
         ReadFile in;
         WriteFile out;
         std::string name = "~/dir/name.txt";
         in.setFileName(name);
         out.setFileName(name);
         in.getFileName();
       }},
  };
}

std::vector<Silent> dates() {
  return {
      {{"setDateFormat", "getDateFormat", "setMonthFormat", "getMonthFormat", "setDateSeparator",
        "getDateSeparator", "setDateTimeSeparator", "getDateTimeSeparator", "setTimeSeparator",
        "getTimeSeparator", "setUseTime", "isUseTime", "setDateTimeFormat", "getDateTimeFormat",
        "defaultDateTimeFormat"},
       [] {
         setDateFormat(getDateFormat());
         setMonthFormat(getMonthFormat());
         setDateSeparator(getDateSeparator());
         setDateTimeSeparator(getDateTimeSeparator());
         setTimeSeparator(getTimeSeparator());
         setUseTime(isUseTime());
         getDateTimeFormat();
         setDateTimeFormat(DAY_MONTH_YEAR, MONTH_NUMBER, '-', ' ', ':', true);
         defaultDateTimeFormat();
       }},
      {{"resetDateTime", "isValidDate", "isValidDateTime", "validDate", "getMonthDays",
        "getDayOfYear", "getAstronomicDay", "getMonthNumber", "getMonthName"},
       [] {
         date_time_record record{31, 2, 2024, 25, 0, 0.0};
         isValidDate(31, 2, 2024);
         isValidDateTime(record);
         validDate(record);
         getMonthDays(2);
         getDayOfYear(5, 3, 2024);
         getDayOfYear(record);
         getAstronomicDay(5, 3, 2024);
         getAstronomicDay(record);
         getMonthNumber("March");
         getMonthName(3, true);
         resetDateTime(record);
       }},
      {{"dateToJulian", "julianToDate", "dateToJulianDays", "parseISOdate", "isValidISOdate",
        "dateToISO"},
       [] {
         date_time_record record = julianToDate(kJulian);
         dateToJulian(2024, 3, 5, 14, 7, 9.0);
         dateToJulian(record);
         dateToJulian("2024-03-05T14:07:09");
         dateToJulianDays(record);
         parseISOdate("20240305T1407", record);
         isValidISOdate("2024-02-30");
         dateToISO("05 March 2024 14:07");
       }},
      {{"julianToISO", "julianToYYYYMMDD", "formatJulianDate", "hourFormat"},
       [] {
         julianToISO(kJulian);
         julianToYYYYMMDD(kJulian);
         formatJulianDate(kJulian);
         formatJulianDate(kJulian, getDateTimeFormat());
         hourFormat(7.5);
       }},
      {{"DayLength::DayLength", "DayLength::~DayLength", "DayLength::FNday", "DayLength::FNrange",
        "DayLength::FNsun", "DayLength::hourAngle", "DayLength::compute", "DayLength::cumulative"},
       [] {
         DayLength day;
         day.julian = kJulian;
         day.latitude = 50;
         day.FNrange(day.FNday());
         day.hourAngle(day.FNsun(1));
         day.compute();
         day.cumulative(3);
       }},
      {{"MoonPhase::sunPosition", "MoonPhase::moonPosition", "MoonPhase::compute"},
       [] {
         MoonPhase moon;
         moon.days = 10000;
         moon.sunPosition();
         moon.moonPosition();
         moon.compute();
       }},
  };
}

std::vector<Silent> addressesAndFlags() {
  return {
      {{"IPv4::set", "IPv4::validFormat", "IPv4::textToBlocks", "IPv4::binaryToBlocks",
        "IPv4::blocksToBinary", "IPv4::text", "IPv4::getLevel"},
       [] {
         IPv4 address;
         address.set("10.20.30.40");
         address.set(0x01020304U);
         address.validFormat("1.2.3");
         address.textToBlocks("1.2.3.4");
         address.binaryToBlocks(1);
         address.blocksToBinary();
         address.text();
         address.getLevel();
       }},
      {{"IPv6::set", "IPv6::text"},
       [] {
         IPv6 address;
         address.set("1111:2222:3333:4444:5555:6666:7777:8888");
         address.text();
       }},
      {{"IsBigEndian", "rotate2b", "rotate4b", "setVerbose", "isVerbose"},
       [] {
         IsBigEndian();
         rotate2b(1);
         rotate4b(1);
         setVerbose(isVerbose());
       }},
  };
}

std::vector<Silent> settings() {
  return {
      {{"Configuration::Configuration", "Configuration::set", "Configuration::get",
        "Configuration::adjustKey", "Configuration::getConfigurationFile",
        "ConfigElement::ConfigElement"},
       [] {
         Configuration unnamed;
         Configuration store("TYPE", "name");
         std::string key = " key ";
         store.adjustKey(key);
         store.set(key, "value");
         store.set(key, "TEXT", "value", "description");
         store.set(key, ConfigElement());
         store.get(key);
         store.getConfigurationFile();
         store.changed = false;  // so that the destructor saves nothing
       }},
      {{"ConfigEvent::ConfigEvent", "ConfigEvent::OnStartElement", "ConfigEvent::OnEndElement",
        "ConfigEvent::OnCharacterData", "ConfigEvent::exportData", "XmlEvent::skipWhiteSpace"},
       [] {
         ConfigEvent event;
         const char* attributes[] = {"data_type", "TEXT", nullptr};
         event.OnStartElement("CONFIGURATION", attributes);
         event.OnStartElement("key", attributes);
         event.OnCharacterData("value", 5);
         event.OnEndElement("key");
         event.skipWhiteSpace("  x", 3);
         config_map target;
         event.exportData(target);
       }},
      {{"ErrorEvent::ErrorEvent", "ErrorEvent::OnStartElement", "ErrorEvent::OnEndElement",
        "ErrorEvent::OnCharacterData", "ErrorEvent::exportData"},
       [] {
         ErrorEvent event;
         event.OnStartElement("ID", nullptr);
         event.OnCharacterData("1", 1);
         event.OnEndElement("ERROR");
         Catalog target;
         event.exportData(target);
       }},
      {{"ReadXml::ReadXml"},
       [] {
         const ReadXml<ConfigEvent> settings;
         const ReadXml<ErrorEvent> errors;
       }},
  };
}

std::vector<Silent> parsers() {
  return {
      {{"XMLEvtHandler::OnPostCreate",
        "XMLEvtHandler::OnStartElement",
        "XMLEvtHandler::OnEndElement",
        "XMLEvtHandler::OnCharacterData",
        "XMLEvtHandler::OnProcessingInstruction",
        "XMLEvtHandler::OnComment",
        "XMLEvtHandler::OnStartCdataSection",
        "XMLEvtHandler::OnEndCdataSection",
        "XMLEvtHandler::OnDefault",
        "XMLEvtHandler::OnUnknownEncoding",
        "XMLEvtHandler::OnStartNamespaceDecl",
        "XMLEvtHandler::OnEndNamespaceDecl",
        "XMLEvtHandler::OnXmlDecl",
        "XMLEvtHandler::OnStartDoctypeDecl",
        "XMLEvtHandler::OnEndDoctypeDecl",
        "StartElementHandler",
        "EndElementHandler",
        "CharacterDataHandler",
        "ProcessingInstructionHandler",
        "CommentHandler",
        "StartCdataSectionHandler",
        "EndCdataSectionHandler",
        "DefaultHandler",
        "UnknownEncodingHandler",
        "StartNamespaceDeclHandler",
        "EndNamespaceDeclHandler",
        "XmlDeclHandler",
        "StartDoctypeDeclHandler",
        "EndDoctypeDeclHandler"},
       [] {
         // Each function with the name of an event passes it to the member of the handler.
         XMLEvtHandler handler;
         handler.OnPostCreate();
         StartElementHandler(&handler, "e", nullptr);
         EndElementHandler(&handler, "e");
         CharacterDataHandler(&handler, "t", 1);
         ProcessingInstructionHandler(&handler, "p", "d");
         CommentHandler(&handler, "c");
         StartCdataSectionHandler(&handler);
         EndCdataSectionHandler(&handler);
         DefaultHandler(&handler, "t", 1);
         XML_Encoding encoding{};
         UnknownEncodingHandler(&handler, "x", &encoding);
         StartNamespaceDeclHandler(&handler, "p", "u");
         EndNamespaceDeclHandler(&handler, "p");
         XmlDeclHandler(&handler, "1.0", "UTF-8", 1);
         StartDoctypeDeclHandler(&handler, "d", nullptr, nullptr, 0);
         EndDoctypeDeclHandler(&handler);
       }},
      {{"XMLParser::XMLParser", "XMLParser::~XMLParser", "XMLParser::Create", "XMLParser::Destroy",
        "XMLParser::GetBuffer", "XMLParser::GetErrorCode", "XMLParser::GetErrorString",
        "XMLParser::GetCurrentByteIndex", "XMLParser::GetCurrentLineNumber",
        "XMLParser::GetCurrentColumnNumber", "XMLParser::GetCurrentByteCount",
        "XMLParser::GetInputContext", "XMLParser::GetExpatVersion"},
       [] {
         XMLEvtHandler handler;
         XMLParser parser(&handler);
         parser.Create("UTF-8", nullptr);
         parser.GetBuffer(1000);
         parser.GetErrorCode();
         parser.GetErrorString();
         XMLParser::GetErrorString(XML_ERROR_SYNTAX);
         parser.GetCurrentByteIndex();
         parser.GetCurrentLineNumber();
         parser.GetCurrentColumnNumber();
         parser.GetCurrentByteCount();
         int offset = 0;
         int size = 0;
         parser.GetInputContext(&offset, &size);
         XMLParser::GetExpatVersion();
         parser.Destroy();
       }},
      {{"XMLParser::EnableStartElementHandler", "XMLParser::EnableEndElementHandler",
        "XMLParser::EnableElementHandler", "XMLParser::EnableCharacterDataHandler",
        "XMLParser::EnableProcessingInstructionHandler", "XMLParser::EnableCommentHandler",
        "XMLParser::EnableStartCdataSectionHandler", "XMLParser::EnableEndCdataSectionHandler",
        "XMLParser::EnableCdataSectionHandler", "XMLParser::EnableDefaultHandler",
        "XMLParser::EnableUnknownEncodingHandler", "XMLParser::EnableStartNamespaceDeclHandler",
        "XMLParser::EnableEndNamespaceDeclHandler", "XMLParser::EnableNamespaceDeclHandler",
        "XMLParser::EnableXmlDeclHandler", "XMLParser::EnableStartDoctypeDeclHandler",
        "XMLParser::EnableEndDoctypeDeclHandler", "XMLParser::EnableDoctypeDeclHandler"},
       [] {
         XMLEvtHandler handler;
         XMLParser parser(&handler);
         parser.Create("UTF-8", nullptr);
         parser.EnableStartElementHandler(true);
         parser.EnableEndElementHandler(true);
         parser.EnableElementHandler(true);
         parser.EnableCharacterDataHandler(true);
         parser.EnableProcessingInstructionHandler(true);
         parser.EnableCommentHandler(true);
         parser.EnableStartCdataSectionHandler(true);
         parser.EnableEndCdataSectionHandler(true);
         parser.EnableCdataSectionHandler(true);
         parser.EnableDefaultHandler(true, true);
         parser.EnableUnknownEncodingHandler(true);
         parser.EnableStartNamespaceDeclHandler(true);
         parser.EnableEndNamespaceDeclHandler(true);
         parser.EnableNamespaceDeclHandler(true);
         parser.EnableXmlDeclHandler(true);
         parser.EnableStartDoctypeDeclHandler(true);
         parser.EnableEndDoctypeDeclHandler(true);
         parser.EnableDoctypeDeclHandler(true);
       }},
  };
}

TEST_F(SilentCalls, MakeNoSystemCalls) {
  for (const auto& part : {texts(), names(), dates(), addressesAndFlags(), settings(), parsers()}) {
    for (const Silent& silent : part) {
      SCOPED_TRACE(silent.functions.front());
      const std::set<long> calls = callsOf([&](Report&) {
        silent.run();
        return std::string();
      });
      // A sanitizer makes calls of its own.
      if (!kHasAddressSanitizer) {
        EXPECT_EQ(calls, std::set<long>());
      }
      for (const std::string& function : silent.functions) {
        FailingFunctions::all().addFunction(function);
      }
    }
  }
}

TEST_F(SilentCalls, AreCounted) {
  EXPECT_EQ(callsOf([](Report&) { return std::to_string(access("x", F_OK)); }),
            std::set<long>({SYS_access}));
}

/// Returns the name of an exported function without its namespace, the arguments of a template and
/// its own, and an empty text for data.
std::string nameOfExported(std::string line) {
  if (std::regex_match(line, std::regex("(typeinfo|vtable|VTT) .*|zn_udf_.*"))) return "";
  const auto replace = [&](const char* pattern, const char* by) {
    line = std::regex_replace(line, std::regex(pattern), by);
  };
  // Until the arguments are gone, the names of operators have no brackets.
  replace("operator\\(\\)", "operator@");
  replace("operator<<", "operator%");
  for (std::string before; before != line;) {
    before = line;
    replace("<[^<>]*>", "");
  }
  replace("^zn_lib::|\\[abi:cxx11\\]|\\(.*", "");
  replace("@", "()");
  replace("%", "<<");
  return line;
}

// This test follows all others, which have noted what they tested.
TEST_F(SilentCalls, AndFailingCallsAreThoseOfAllFunctions) {
  const auto& program = *testing::UnitTest::GetInstance();
  if (program.test_to_run_count() != program.total_test_count()) {
    GTEST_SKIP() << "the other tests tell what they tested";
  }
  std::set<std::string> exported;
  std::ifstream list(ZN_UDF_TEST_DATA "/exports.txt");
  for (std::string line; std::getline(list, line);) exported.insert(nameOfExported(line));
  exported.erase("");

  const FailingFunctions& all = FailingFunctions::all();
  std::set<std::string> tested;
  std::size_t withCalls = 0;
  std::set<std::string> systemCalls;
  for (const auto& [function, calls] : all.functions()) {
    tested.insert(function);
    withCalls += calls.empty() ? 0 : 1;
    for (const auto& [call, hasFailed] : calls) {
      // A sanitizer makes calls of its own.
      EXPECT_TRUE(hasFailed || kHasAddressSanitizer)
          << call << " of " << function << " has never failed";
      systemCalls.insert(call);
    }
  }
  EXPECT_EQ(tested, exported);
  RecordProperty("operations", all.operations());
  RecordProperty("functions", static_cast<int>(tested.size()));
  RecordProperty("functions_with_system_calls", static_cast<int>(withCalls));
  RecordProperty("system_calls", static_cast<int>(systemCalls.size()));
  RecordProperty("faults", all.failedCalls());
  const char* const record = std::getenv("ZN_UDF_FAILING_CALLS");
  if (record != nullptr) all.write(record);
}

}  // namespace

#endif
