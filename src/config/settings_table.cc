#include "config/settings_table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <type_traits>

#include "common/numbers.h"
#include "common/paths.h"
#include "common/text.h"

namespace qelm::config {
namespace {

using L = LocalSettings;
using enum SettingKind;

constexpr std::array kSettings = {
    Setting{"MAIN_SETTINGS_PATH", kPath, &L::main_settings_path, "DEFAULT", 0, 0,
            "path of the main settings document; DEFAULT is the local copy in the settings folder"},
    Setting{"DEFAULT_SCHEME_CATEGORY", kString, &L::default_scheme_category, "<none>", 0, 0,
            "scheme category that is used until another one is chosen"},
    Setting{"XPATH_HISTORY_MAX_LENGTH", kInteger, &L::xpath_history_max_length, "50", 0, 200,
            "how many expressions the history of the XPath editors keeps"},
    Setting{"XPATH_EXPRESSION_MAX_LENGTH", kInteger, &L::xpath_expression_max_length, "1000", 100, 10000,
            "longest XPath expression that is accepted, in characters"},
    Setting{"XPATH_MAX_MATCHES", kInteger, &L::xpath_max_matches, "10000", 100, 1000000,
            "most nodes that an XPath expression may select"},
    Setting{"SOURCE_FILE_FILTER_CONDITION_TAG", kString, &L::source_file_filter_condition_tag, "Hidden", 0, 0,
            "condition under which the source file filters hide content"},
    Setting{"PRINT_SCHEME_PARMS_AFTER_ANY_DATA_READ", kBoolean, &L::print_scheme_parms_after_any_data_read,
            "0", 0, 0, "print a scheme's parameters to the console whenever one is loaded"},
    Setting{"PROMPT_SET_WYSIWYG_TO_COMPLETE_OPERATION", kFlag, &L::prompt_set_wysiwyg_to_complete_operation,
            "1", 0, 1, "ask before switching the view that an operation needs"},
    Setting{"COLOR_DEFAULT_COLORING_SCHEME", kScheme, &L::color_default_coloring_scheme, "<none>", 0, 0,
            "coloring scheme that is active until another one is chosen"},
    Setting{"COLOR_IMPORT_ELEM_DEFS_TO_UNCOLOR", kBoolean, &L::color_import_elem_defs_to_uncolor, "1", 0, 0,
            "uncoloring imports the document's own element definitions again"},
    Setting{"COLOR_CHAR_PROP_UNCOLOR_APPLY_BLACK", kBoolean, &L::color_char_prop_uncolor_apply_black, "1", 0,
            0, "uncoloring sets the text color back to black"},
    Setting{"COLOR_CHAR_PROP_UNCOLOR_REMOVE_UNDERLINING", kBoolean,
            &L::color_char_prop_uncolor_remove_underlining, "1", 0, 0, "uncoloring removes underlining"},
    Setting{"COLOR_CHAR_PROP_UNCOLOR_REMOVE_HIGHLIGHTING", kBoolean,
            &L::color_char_prop_uncolor_remove_highlighting, "1", 0, 0,
            "uncoloring removes background colors"},
    Setting{
        "FILT_DEFAULT_FILTER_TYPE", kString, &L::filt_default_filter_type, "DUPLICATE", 0, 0,
        "filter used by default: with D at its start the duplicate file filter, else the source file filter"},
    Setting{"FILT_DEFAULT_REMOVE_COLORING", kBoolean, &L::filt_default_remove_coloring, "0", 0, 0,
            "remove coloring after filtering"},
    Setting{"FILT_DEFAULT_SAVE_FILES", kBoolean, &L::filt_default_save_files, "0", 0, 0,
            "save files before filtering"},
    Setting{"FILT_DISABLE_SCREEN_UPDATES", kBoolean, &L::filt_disable_screen_updates, "0", 0, 0,
            "switch screen updates off while filtering"},
    Setting{"FILT_XPATH_CONSIDER_TEXT_NODES", kBoolean, &L::filt_xpath_consider_text_nodes, "0", 0, 0,
            "XPath filter schemes also decide about the text between elements"},
    Setting{"FILT_FILTER_TEXT_INSETS", kBoolean, &L::filt_filter_text_insets, "1", 0, 0,
            "filter the content of text insets too"},
    Setting{"FILT_DELETE_BOOK_EMPTIES_DEFAULT", kBoolean, &L::filt_delete_book_empties_default, "1", 0, 0,
            "remove components from a filtered book that the filter left empty"},
    Setting{"FILT_HIDE_CONTENT_AFTER_NO_RESTORE_FILTER", kFlag, &L::filt_hide_content_after_no_restore_filter,
            "1", 0, 2, "hide what failed after a filter that does not restore first: no, yes, or 2 to ask"},
    Setting{"FILT_SHOW_ALL_BEFORE_RESTORE_FILTER", kBoolean, &L::filt_show_all_before_restore_filter, "1", 0,
            0, "show hidden content before a filter that does not restore first"},
    Setting{"FILT_REDIRECT_ALL_XREFS_DURING_BOOK_FILTER", kBoolean,
            &L::filt_redirect_all_xrefs_during_book_filter, "0", 0, 0,
            "make cross-references of a filtered book point to its own files"},
    Setting{"BF_DEFAULT_SCHEME_DATA_FILE_FOLDER", kPath, &L::bf_default_scheme_data_file_folder, "", 0, 0,
            "batch filter: folder of the scheme data files"},
    Setting{"BF_DEFAULT_OUTPUT_FOLDER_PATTERNS", kPathList, &L::bf_default_output_folder_patterns, "", 0, 0,
            "batch filter: a pattern of output folders to choose from"},
    Setting{"BF_POST_PROCESS_PDF_FILENAME_PATTERN", kString, &L::bf_post_process_pdf_filename_pattern,
            "<book_name>.pdf", 0, 0, "batch filter: name pattern of the PDF file"},
    // The same ending as for PDF is deliberate.
    Setting{"BF_POST_PROCESS_XML_FILENAME_PATTERN", kString, &L::bf_post_process_xml_filename_pattern,
            "<book_name>.pdf", 0, 0, "batch filter: name pattern of the XML file"},
    Setting{"BF_REPORT_FILENAME_PATTERN", kString, &L::bf_report_filename_pattern,
            "Batch_filter_report_<year>_<month>_<day>__<hour>_<min>_<sec>.fm", 0, 0,
            "batch filter: name pattern of the report"},
    Setting{"BF_DEFAULT_REMOVE_COLORING_STRING", kString, &L::bf_default_remove_coloring_string, "External",
            0, 0, "batch filter: schemes with this in their name remove coloring"},
    Setting{"BF_REMOVE_COLORING_STRING_IS_CASE_SENSITIVE", kBoolean,
            &L::bf_remove_coloring_string_is_case_sensitive, "0", 0, 0,
            "batch filter: letter case counts in that string"},
    Setting{"BF_POST_PROCESS_ROOT_ATTR_CONFIG", kList, &L::bf_post_process_root_attr_config, "", 0, 0,
            "batch filter: an attribute to set on the root element"},
    Setting{"BF_DEFAULT_CLOSE_REPORT_AFTER_BATCH_FILTER", kBoolean,
            &L::bf_default_close_report_after_batch_filter, "1", 0, 0,
            "batch filter: close the report when done"},
    Setting{"BF_POST_PROCESS_DEFAULT_ENABLE_VAR_IMPORT", kBoolean,
            &L::bf_post_process_default_enable_var_import, "1", 0, 0, "batch filter: import variables"},
    Setting{"BF_POST_PROCESS_DEFAULT_VAR_IMPORT_FOLDER", kPath, &L::bf_post_process_default_var_import_folder,
            "../variables", 0, 0, "batch filter: folder of the variable files, seen from the output"},
    Setting{"BF_POST_PROCESS_DEFAULT_ENABLE_IMPORT_METADATA", kBoolean,
            &L::bf_post_process_default_enable_import_metadata, "1", 0, 0, "batch filter: import metadata"},
    // Its own separator lets the value hold "=".
    Setting{"BF_POST_PROCESS_METADATA_TABLE_IDENTIFIER", kString,
            &L::bf_post_process_metadata_table_identifier, "", 0, 0,
            "batch filter: what the metadata table is known by; written behind \"~\"", '~'},
    Setting{"BF_POST_PROCESS_DEFAULT_ENABLE_HIDE_BOUNDARIES", kBoolean,
            &L::bf_post_process_default_enable_hide_boundaries, "1", 0, 0,
            "batch filter: hide element boundaries"},
    Setting{"BF_POST_PROCESS_DEFAULT_ENABLE_BOOK_UPDATE", kBoolean,
            &L::bf_post_process_default_enable_book_update, "1", 0, 0, "batch filter: update the book"},
    Setting{"BF_POST_PROCESS_DEFAULT_ENABLE_PDF_SAVE", kBoolean, &L::bf_post_process_default_enable_pdf_save,
            "1", 0, 0, "batch filter: save as PDF"},
    Setting{"BF_POST_PROCESS_DEFAULT_PDF_DESTINATION_FOLDER", kPath,
            &L::bf_post_process_default_pdf_destination_folder, "pdf", 0, 0,
            "batch filter: folder of the PDF files"},
    Setting{"BF_POST_PROCESS_PDF_JOB_OPTIONS", kString, &L::bf_post_process_pdf_job_options, "", 0, 0,
            "batch filter: name of the PDF job options"},
    Setting{"BF_POST_PROCESS_PDF_PAGE_WIDTH_IN", kReal, &L::bf_post_process_pdf_page_width_in, "0.0", 0, 0,
            "batch filter: width of the PDF page in inches"},
    Setting{"BF_POST_PROCESS_PDF_PAGE_HEIGHT_IN", kReal, &L::bf_post_process_pdf_page_height_in, "0.0", 0, 0,
            "batch filter: height of the PDF page in inches"},
    Setting{"BF_POST_PROCESS_PDF_PAGE_WIDTH_CM", kReal, &L::bf_post_process_pdf_page_width_cm, "0.0", 0, 0,
            "batch filter: width of the PDF page in centimetres, where none is given in inches"},
    Setting{"BF_POST_PROCESS_PDF_PAGE_HEIGHT_CM", kReal, &L::bf_post_process_pdf_page_height_cm, "0.0", 0, 0,
            "batch filter: height of the PDF page in centimetres"},
    Setting{"BF_POST_PROCESS_DEFAULT_ENABLE_XML_SAVE", kBoolean, &L::bf_post_process_default_enable_xml_save,
            "1", 0, 0, "batch filter: save as XML"},
    Setting{"BF_POST_PROCESS_DEFAULT_XML_DESTINATION_FOLDER", kPath,
            &L::bf_post_process_default_xml_destination_folder, "xml", 0, 0,
            "batch filter: folder of the XML files"},
    Setting{"BF_POST_PROCESS_DEFAULT_XML_STRUCT_APP", kString, &L::bf_post_process_default_xml_struct_app,
            "xml", 0, 0, "batch filter: structure application for XML"},
    Setting{"BF_POST_PROCESS_VAR_IMPORT_FILTER_STRINGS_TO_REMOVE", kList,
            &L::bf_post_process_var_import_filter_strings_to_remove, "", 0, 0,
            "batch filter: a string to take out of a scheme's name when its variable file is looked for"},
    Setting{"BF_POST_PROCESS_VAR_IMPORT_FILE_STRINGS_TO_REMOVE", kList,
            &L::bf_post_process_var_import_file_strings_to_remove, "", 0, 0,
            "batch filter: a string to take out of a file's name when its variable file is looked for"},
    Setting{"BF_BU_UPDATE_GENERATABLE_FILES", kBoolean, &L::bf_bu_update_generatable_files, "1", 0, 0,
            "book update: generated files"},
    Setting{"BF_BU_UPDATE_NUMBERING", kBoolean, &L::bf_bu_update_numbering, "1", 0, 0,
            "book update: numbering"},
    Setting{"BF_BU_UPDATE_MASTER_PAGES", kBoolean, &L::bf_bu_update_master_pages, "0", 0, 0,
            "book update: master pages"},
    Setting{"BF_BU_UPDATE_OLE_REFS", kBoolean, &L::bf_bu_update_ole_refs, "0", 0, 0,
            "book update: OLE links"},
    Setting{"BF_BU_UPDATE_TEXT_INSETS", kBoolean, &L::bf_bu_update_text_insets, "0", 0, 0,
            "book update: text insets"},
    Setting{"BF_BU_UPDATE_XREFS", kBoolean, &L::bf_bu_update_xrefs, "1", 0, 0,
            "book update: cross-references"},
    Setting{"BF_BU_SHOW_BOOK_ERROR_LOG", kBoolean, &L::bf_bu_show_book_error_log, "1", 0, 0,
            "book update: show the error log"},
    Setting{"COL_REMOVE_CHG_BARS_ON_MANUAL_UNCOLOR", kBoolean, &L::col_remove_chg_bars_on_manual_uncolor, "0",
            0, 0, "uncoloring by command removes change bars"},
    Setting{"COL_REMOVE_CHG_BARS_ON_AUTO_UNCOLOR", kBoolean, &L::col_remove_chg_bars_on_auto_uncolor, "0", 0,
            0, "uncoloring as a part of another operation removes change bars"},
    Setting{"VAL_DEFAULT_VALIDATION_SCHEME", kScheme, &L::val_default_validation_scheme, "<none>", 0, 0,
            "validation scheme that is active until another one is chosen"},
    Setting{"VAL_AUTO_VALIDATION_ENABLED", kBoolean, &L::val_auto_validation_enabled, "0", 0, 0,
            "validate whenever an element or attribute changes"},
    Setting{"VAL_APPLY_STRIKETHROUGH_TEXT", kBoolean, &L::val_apply_strikethrough_text, "1", 0, 0,
            "strike through what validation finds"},
    Setting{"VAL_RULE_1_ENABLED", kBoolean, &L::val_rule_1_enabled, "1", 0, 0, "validation rule 1"},
    Setting{"VAL_RULE_2_ENABLED", kBoolean, &L::val_rule_2_enabled, "1", 0, 0, "validation rule 2"},
    // Off by default, deliberately unlike the other three.
    Setting{"VAL_RULE_3_ENABLED", kBoolean, &L::val_rule_3_enabled, "0", 0, 0, "validation rule 3"},
    Setting{"VAL_RULE_4_ENABLED", kBoolean, &L::val_rule_4_enabled, "1", 0, 0, "validation rule 4"},
    Setting{"PROMPT_DELETE_SCHEME_ITEM_WARNING", kBoolean, &L::prompt_delete_scheme_item_warning, "1", 0, 0,
            "ask before a part of a scheme is deleted"},
    Setting{"PROMPT_FILTER_UNSAVED_FILE_WARNING", kBoolean, &L::prompt_filter_unsaved_file_warning, "1", 0, 0,
            "ask before a changed file is saved for filtering"},
    Setting{"PROMPT_OPENED_PREVIOUSLY_FILTERED_DOC_WARNING", kBoolean,
            &L::prompt_opened_previously_filtered_doc_warning, "1", 0, 0,
            "offer to restore a filtered document when it is opened"},
    Setting{"PROMPT_POST_DOCUMENT_FILTER_MESSAGING", kBoolean, &L::prompt_post_document_filter_messaging, "1",
            0, 0, "say when a document has been filtered"},
    Setting{"PROMPT_POST_BOOK_FILTER_MESSAGING", kBoolean, &L::prompt_post_book_filter_messaging, "1", 0, 0,
            "say when a book has been filtered"},
    Setting{"PROMPT_BAD_VAL_SCHEME_ON_STARTUP_WARNING", kBoolean,
            &L::prompt_bad_val_scheme_on_startup_warning, "1", 0, 0,
            "warn at the start when the validation scheme cannot be read"},
    Setting{"PROMPT_BAD_COLOR_IN_SCHEME", kBoolean, &L::prompt_bad_color_in_scheme, "1", 0, 0,
            "warn when a scheme names a color that is not defined"},
    Setting{"PROMPT_PRE_RESTORE_FILE", kBoolean, &L::prompt_pre_restore_file, "1", 0, 0,
            "ask before restoring a document or a book"},
    Setting{"PROMPT_PRE_UNCOLOR_FILE", kBoolean, &L::prompt_pre_uncolor_file, "1", 0, 0,
            "ask before uncoloring"},
    Setting{"SUPPRESS_FILE_OPENING_ALERTS", kBoolean, &L::suppress_file_opening_alerts, "0", 0, 0,
            "open files without the host's own alerts"},
    Setting{"USE_ALTERNATE_ALERTS", kBoolean, &L::use_alternate_alerts, "0", 0, 0,
            "show alerts in the plug-in's own message box"},
    // The name of a program, which is handed to the platform as it stands.
    Setting{"NOTEPAD_EXE_PATH", kString, &L::notepad_exe_path, "C:\\Windows\\NOTEPAD.EXE", 0, 0,
            "text editor for the local settings file and for logs"},
    Setting{"CFG_FILE_BROWSE_USE_ACTIVE_FILE_FOLDER", kBoolean, &L::cfg_file_browse_use_active_file_folder,
            "1", 0, 0, "file browsers start in the active file's folder"},
    Setting{"QELM_DEBUG_MODE", kString, &L::qelm_debug_mode, "OFF", 0, 0,
            "DoPrompts asks at each step, WriteFilterLog writes a debug log"},
    Setting{"QELM_DEBUG_LOG_FOLDER", kPath, &L::qelm_debug_log_folder, "", 0, 0,
            "folder of the debug log; read only in a debug mode"},
    Setting{"QELM_DEBUG_LOG_FILENAME", kString, &L::qelm_debug_log_filename, "", 0, 0,
            "name of the debug log; read only in a debug mode"},
    Setting{"STARTUP_LANGUAGE", kString, &L::startup_language, "English", 0, 0,
            "language of messages and dialogs; DEFAULT is the host's own"},
    Setting{"QELM_LICENSE_TYPE", kString, &L::qelm_license_type, "NORMAL", 0, 0,
            "which of the internal commands exist"},
    Setting{"CONFIG_FILE_COLOR_DELIMITER", kString, &L::config_file_color_delimiter, ",", 0, 0,
            "what separates color values in configuration files"},
    Setting{"FILES_TO_OPEN_ON_STARTUP", kPathList, &L::files_to_open_on_startup, "", 0, 0,
            "a file to open at the start; one that begins with \";\" is passed over"},
};

// What a word says of a switch, nothing when it says nothing. "on" and "off" tell by their first letter only
// that they are no yes.
std::optional<bool> ReadBoolean(std::string_view text) {
  const common::SwitchWord word = common::ReadSwitchWord(text);
  if (word != common::SwitchWord::kUnclear) return word == common::SwitchWord::kTrue;
  if (!text.empty() && (text.front() == 'o' || text.front() == 'O')) return false;
  return std::nullopt;
}

void Assign(const Setting&, std::string_view text, bool& value) { value = ReadBoolean(text).value_or(value); }

void Assign(const Setting& setting, std::string_view text, std::int32_t& value) {
  if (setting.kind == kInteger) {
    value = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(common::ReadInteger(text), setting.minimum, setting.maximum));
  } else if (setting.maximum == 2 && (text == "2" || common::AsciiLower(text) == "ask")) {
    value = 2;
  } else if (const std::optional<bool> word = ReadBoolean(text)) {
    value = *word ? 1 : 0;
  }
}

void Assign(const Setting&, std::string_view text, double& value) { value = common::ReadReal(text); }

std::string TextOf(const Setting& setting, std::string_view text) {
  const bool path = setting.kind == kPath || setting.kind == kPathList;
  return path ? common::PlatformPath(text) : std::string(text);
}

void Assign(const Setting& setting, std::string_view text, std::string& value) {
  value = TextOf(setting, text);
}

void Assign(const Setting& setting, std::string_view text, std::vector<std::string>& value) {
  value.push_back(TextOf(setting, text));
}

std::string RealText(double value) {
  std::array<char, 32> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed);
  std::string text(buffer.data(), end.ptr);
  return text.find('.') == text.npos ? text + ".0" : text;
}

}  // namespace

std::span<const Setting> AllSettings() { return kSettings; }

const Setting* FindSetting(std::string_view key) {
  const auto found =
      std::find_if(kSettings.begin(), kSettings.end(), [key](const Setting& s) { return s.key == key; });
  return found == kSettings.end() ? nullptr : &*found;
}

std::string KindText(const Setting& setting) {
  switch (setting.kind) {
    case kBoolean:
      return "yes/no";
    case kFlag:
      return setting.maximum == 2 ? "yes/no/ask" : "yes/no";
    case kInteger:
      return "number " + std::to_string(setting.minimum) + " to " + std::to_string(setting.maximum);
    case kReal:
      return "decimal number";
    case kString:
      return "text";
    case kPath:
      return "path";
    case kScheme:
      return "name";
    case kList:
      return "list";
    case kPathList:
      return "list of paths";
  }
  return {};
}

std::vector<std::string> ValueTexts(const Setting& setting, const LocalSettings& settings) {
  return std::visit(
      [&settings](auto member) -> std::vector<std::string> {
        const auto& value = settings.*member;
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, std::vector<std::string>>) {
          return value;
        } else if constexpr (std::is_same_v<Value, std::string>) {
          return {value};
        } else if constexpr (std::is_same_v<Value, double>) {
          return {RealText(value)};
        } else {
          return {std::to_string(static_cast<std::int32_t>(value))};
        }
      },
      setting.field);
}

void SetValue(const Setting& setting, std::string_view text, LocalSettings* settings) {
  std::visit(
      [&](auto member) {
        using Value = std::decay_t<decltype(settings->*member)>;
        if constexpr (!std::is_same_v<Value, std::vector<std::string>>) SetDefault(setting, settings);
        if (!text.empty()) Assign(setting, text, settings->*member);
      },
      setting.field);
}

void SetDefault(const Setting& setting, LocalSettings* settings) {
  std::visit(
      [&](auto member) {
        using Value = std::decay_t<decltype(settings->*member)>;
        if constexpr (std::is_same_v<Value, std::vector<std::string>>) {
          (settings->*member).clear();
        } else if constexpr (std::is_same_v<Value, std::string>) {
          settings->*member = setting.default_text;
        } else {
          Assign(setting, setting.default_text, settings->*member);
        }
      },
      setting.field);
}

}  // namespace qelm::config
