#include "settings_pages.h"

#include <string_view>

#include "i18n.h"
#include "labels.h"
#include "support/setting_entries.h"
#include "support/setting_table.h"

namespace mxrk7setup {

namespace {

using nvx::support::Args;
using nvx::support::Setting;

const Setting &setting(std::string_view name) {
  const Setting *found = nvx::support::findSetting(name);
  if (!found) throw std::logic_error("no setting " + std::string(name));
  return *found;
}

GtkWidget *group(const std::string &title, const std::string &description) {
  GtkWidget *g = adw_preferences_group_new();
  if (!title.empty()) adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(g), title.c_str());
  if (!description.empty()) adw_preferences_group_set_description(ADW_PREFERENCES_GROUP(g), description.c_str());
  return g;
}

// A row per field of one instance. The first row of a setting whose group does not carry its
// sentence carries it as its subtitle.
void addRows(SettingRows &rows, const Setting &s, const Args &args, bool sentence,
             const std::function<void(GtkWidget *)> &place) {
  for (size_t field = 0; field < s.fields.size(); ++field) {
    SettingRow &row = rows.add(s, args, field);
    const char *subtitle = adw_action_row_get_subtitle(ADW_ACTION_ROW(row.widget()));
    if (sentence && field == 0 && (!subtitle || !*subtitle))
      adw_action_row_set_subtitle(ADW_ACTION_ROW(row.widget()), translated(s.sentence).c_str());
    place(row.widget());
  }
}

void addToGroup(SettingRows &rows, GtkWidget *g, const Setting &s, const Args &prefix, bool sentence) {
  for (const auto &args : nvx::support::instances(s, prefix))
    addRows(rows, s, args, sentence, [g](GtkWidget *row) { adw_preferences_group_add(ADW_PREFERENCES_GROUP(g), row); });
}

GtkWidget *page(const char *name, const std::string &title, const char *icon) {
  GtkWidget *p = adw_preferences_page_new();
  gtk_widget_set_name(p, name);
  adw_preferences_page_set_title(ADW_PREFERENCES_PAGE(p), title.c_str());
  adw_preferences_page_set_icon_name(ADW_PREFERENCES_PAGE(p), icon);
  return p;
}

// What a beat FX position holds, shown on its row while it is folded: "ECHO · 200 · 16", or
// "Not set" when nothing is.
std::string summary(const std::vector<const SettingRow *> &items) {
  std::string text;
  bool any = false;
  for (const SettingRow *item : items) {
    const auto value = item->shownValue();
    any = any || value.has_value();
    if (!text.empty()) text += " · ";
    text += value ? valueText(item->setting(), item->args(), item->field(), *value) : "–";
  }
  return any ? text : std::string(_("Not set"));
}

void add(GtkWidget *p, GtkWidget *g) { adw_preferences_page_add(ADW_PREFERENCES_PAGE(p), ADW_PREFERENCES_GROUP(g)); }

}  // namespace

GtkWidget *makeAudioPage(SettingRows &rows, GtkWidget *routingBanner) {
  GtkWidget *p = page("audio", _("Audio"), "audio-speakers-symbolic");
  const Setting &routing = setting("routing");
  GtkWidget *channels = group(translated(routing.title), translated(routing.sentence));
  adw_preferences_group_add(ADW_PREFERENCES_GROUP(channels), routingBanner);
  addToGroup(rows, channels, routing, {}, false);
  add(p, channels);
  GtkWidget *level = group({}, {});
  addToGroup(rows, level, setting("boost"), {}, true);
  add(p, level);
  return p;
}

GtkWidget *makeFxPage(SettingRows &rows) {
  GtkWidget *p = page("fx", _("FX Banks"), "media-playlist-shuffle-symbolic");
  const Setting &filter = setting("fx-filter");
  const Setting &beat = setting("beat-fx");
  const Setting &fader = setting("channel-fader");
  const Setting &tail = setting("beat-fx-tail");
  for (const uint32_t bank : filter.params.front().domain.members()) {
    GtkWidget *g = group(bankTitle(bank), translated(beat.sentence));
    addToGroup(rows, g, filter, {bank}, true);
    // Each beat FX position is an expander, by the mixer's name for it, holding its three items.
    for (const auto &position : beat.params[1].domain.choices) {
      GtkWidget *expander = adw_expander_row_new();
      adw_preferences_row_set_title(ADW_PREFERENCES_ROW(expander), positionName(position.index).c_str());
      gtk_widget_set_name(expander, ("beat-fx-" + std::to_string(bank) + "-" + std::to_string(position.index)).c_str());
      std::vector<const SettingRow *> items;
      for (const auto &args : nvx::support::instances(beat, {bank, position.index}))
        addRows(rows, beat, args, false, [&](GtkWidget *row) {
          adw_expander_row_add_row(ADW_EXPANDER_ROW(expander), row);
          items.push_back(rows.find(gtk_widget_get_name(row)));
        });
      rows.onRefreshed([expander, items] {
        adw_expander_row_set_subtitle(ADW_EXPANDER_ROW(expander), summary(items).c_str());
      });
      adw_preferences_group_add(ADW_PREFERENCES_GROUP(g), expander);
    }
    addToGroup(rows, g, fader, {bank}, true);
    addToGroup(rows, g, tail, {bank}, true);
    add(p, g);
  }
  return p;
}

GtkWidget *makePlayPage(SettingRows &rows) {
  GtkWidget *p = page("play", _("Play"), "media-playback-start-symbolic");
  GtkWidget *g = group({}, {});
  for (const auto &s : nvx::support::settingTable())
    if (s.params.empty() && s.name != "boost") addToGroup(rows, g, s, {}, true);
  add(p, g);
  return p;
}

}  // namespace mxrk7setup
