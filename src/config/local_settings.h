// The local settings: what a user may tune, one plain field a key, and where each value came from.
//
// A field is named after its key in small letters. The values stand in settings_table.h, the only place that
// knows all keys; read_settings.h fills them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qelm::config {

inline constexpr std::string_view kNoName = "<none>";

// Where the files of the settings lie, as paths of the platform.
struct SettingsPaths {
  std::string plugin_folder;
  std::string settings_folder;  // the per-user folder, or the plug-in's own
  bool per_user = true;
  std::string local_settings;            // QELM_Local_Settings.txt
  std::string local_copy;                // QELM_MainSettings_LocalCopy.fm
  std::string report_template;           // QELM_Plugin_Report_Template.fm
  std::string report;                    // QELM_Plugin_Report.fm
  std::string main_settings;             // the main settings document in force; empty while there is none
  std::string configured_main_settings;  // the one that the settings named
};

// Where a value came from.
enum class SettingSource : std::uint8_t { kDefault, kFile, kCommandLine, kSession };

struct SettingOrigin {
  SettingSource source = SettingSource::kDefault;
  std::size_t line = 0;  // of the local settings file, from 1; the first one of a list
};

// Something in the file that a user should know of: a line that no key takes.
struct SettingsNotice {
  std::size_t line = 0;
  std::string text;
};

// One setting that the command line gave, which stands before the file.
using SettingOverride = std::pair<std::string, std::string>;

struct LocalSettings {
  std::string main_settings_path = "DEFAULT";  // as written; paths.main_settings is the path in force
  std::string default_scheme_category{kNoName};
  std::int32_t xpath_history_max_length = 50;
  std::int32_t xpath_expression_max_length = 1000;
  std::int32_t xpath_max_matches = 10000;
  std::string source_file_filter_condition_tag = "Hidden";
  bool print_scheme_parms_after_any_data_read = false;
  std::int32_t prompt_set_wysiwyg_to_complete_operation = 1;
  std::string color_default_coloring_scheme{kNoName};  // the active coloring scheme
  bool color_import_elem_defs_to_uncolor = true;
  bool color_char_prop_uncolor_apply_black = true;
  bool color_char_prop_uncolor_remove_underlining = true;
  bool color_char_prop_uncolor_remove_highlighting = true;
  std::string filt_default_filter_type = "DUPLICATE";
  bool filt_default_remove_coloring = false;
  bool filt_default_save_files = false;
  bool filt_disable_screen_updates = false;
  bool filt_xpath_consider_text_nodes = false;
  bool filt_filter_text_insets = true;
  bool filt_delete_book_empties_default = true;
  std::int32_t filt_hide_content_after_no_restore_filter = 1;  // 0 never, 1 always, 2 ask
  bool filt_show_all_before_restore_filter = true;
  bool filt_redirect_all_xrefs_during_book_filter = false;
  std::string bf_default_scheme_data_file_folder;
  std::vector<std::string> bf_default_output_folder_patterns;
  std::string bf_post_process_pdf_filename_pattern = "<book_name>.pdf";
  std::string bf_post_process_xml_filename_pattern = "<book_name>.pdf";
  std::string bf_report_filename_pattern = "Batch_filter_report_<year>_<month>_<day>__<hour>_<min>_<sec>.fm";
  std::string bf_default_remove_coloring_string = "External";
  bool bf_remove_coloring_string_is_case_sensitive = false;
  std::vector<std::string> bf_post_process_root_attr_config;
  bool bf_default_close_report_after_batch_filter = true;
  bool bf_post_process_default_enable_var_import = true;
  std::string bf_post_process_default_var_import_folder = "../variables";
  bool bf_post_process_default_enable_import_metadata = true;
  std::string bf_post_process_metadata_table_identifier;
  bool bf_post_process_default_enable_hide_boundaries = true;
  bool bf_post_process_default_enable_book_update = true;
  bool bf_post_process_default_enable_pdf_save = true;
  std::string bf_post_process_default_pdf_destination_folder = "pdf";
  std::string bf_post_process_pdf_job_options;
  double bf_post_process_pdf_page_width_in = 0.0;
  double bf_post_process_pdf_page_height_in = 0.0;
  double bf_post_process_pdf_page_width_cm = 0.0;
  double bf_post_process_pdf_page_height_cm = 0.0;
  bool bf_post_process_default_enable_xml_save = true;
  std::string bf_post_process_default_xml_destination_folder = "xml";
  std::string bf_post_process_default_xml_struct_app = "xml";
  std::vector<std::string> bf_post_process_var_import_filter_strings_to_remove;
  std::vector<std::string> bf_post_process_var_import_file_strings_to_remove;
  bool bf_bu_update_generatable_files = true;
  bool bf_bu_update_numbering = true;
  bool bf_bu_update_master_pages = false;
  bool bf_bu_update_ole_refs = false;
  bool bf_bu_update_text_insets = false;
  bool bf_bu_update_xrefs = true;
  bool bf_bu_show_book_error_log = true;
  bool col_remove_chg_bars_on_manual_uncolor = false;
  bool col_remove_chg_bars_on_auto_uncolor = false;
  std::string val_default_validation_scheme{kNoName};  // the active validation scheme
  bool val_auto_validation_enabled = false;
  bool val_apply_strikethrough_text = true;
  bool val_rule_1_enabled = true;
  bool val_rule_2_enabled = true;
  bool val_rule_3_enabled = false;
  bool val_rule_4_enabled = true;
  bool prompt_delete_scheme_item_warning = true;
  bool prompt_filter_unsaved_file_warning = true;
  bool prompt_opened_previously_filtered_doc_warning = true;
  bool prompt_post_document_filter_messaging = true;
  bool prompt_post_book_filter_messaging = true;
  bool prompt_bad_val_scheme_on_startup_warning = true;
  bool prompt_bad_color_in_scheme = true;
  bool prompt_pre_restore_file = true;
  bool prompt_pre_uncolor_file = true;
  bool suppress_file_opening_alerts = false;
  bool use_alternate_alerts = false;
  std::string notepad_exe_path = "C:\\Windows\\NOTEPAD.EXE";
  bool cfg_file_browse_use_active_file_folder = true;
  std::string qelm_debug_mode = "OFF";
  std::string qelm_debug_log_folder;
  std::string qelm_debug_log_filename;
  std::string startup_language = "English";
  std::string qelm_license_type = "NORMAL";
  std::string config_file_color_delimiter = ",";
  std::vector<std::string> files_to_open_on_startup;

  // What follows from the keys.
  std::string coloring_category{kNoName};  // DEFAULT_SCHEME_CATEGORY, until one is chosen
  std::string validation_category{kNoName};
  std::string classic_editor_category{kNoName};
  std::int32_t filter_type = 3;     // 3 duplicating, 1 in place
  std::int32_t debug_mode = 0;      // 0 off, 1 prompts, 3 log
  std::int32_t pdf_page_width = 0;  // in 1/65536 point; 0: no page size
  std::int32_t pdf_page_height = 0;

  SettingsPaths paths;
  std::vector<SettingOverride> overrides;  // set before reading; hold for every reading
  std::vector<SettingOrigin> origins;      // by the index of the setting in its table
  std::vector<SettingsNotice> notices;
};

}  // namespace qelm::config
