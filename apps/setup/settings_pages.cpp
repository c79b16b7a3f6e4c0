#include "settings_pages.h"

#include <algorithm>
#include <string_view>

#include "i18n.h"
#include "labels.h"
#include "support/setting_entries.h"
#include "support/setting_table.h"

namespace mxrk7setup {

namespace {

using nvx::support::Args;
using nvx::support::Setting;
using nvx::tables::Area;

// The settings of one area of the mixer, in the table's order.
std::vector<const Setting *> settingsOf(Area area) {
  std::vector<const Setting *> settings;
  for (const auto &s : nvx::support::settingTable())
    if (s.descriptor->area == area) settings.push_back(&s);
  return settings;
}

bool hasPositions(const Setting &s) {
  return std::any_of(s.descriptor->params.begin(), s.descriptor->params.end(),
                     [](const nvx::tables::ParamSpec &p) { return p.kind == nvx::tables::Param::Position; });
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

// The routing (the setting the mixers' input selectors can make pointless) in a group of its own with
// its warning banner; the audio's other settings below.
GtkWidget *makeAudioPage(SettingRows &rows, GtkWidget *routingBanner) {
  GtkWidget *p = page("audio", _("Audio"), "audio-speakers-symbolic");
  GtkWidget *level = group({}, {});
  for (const Setting *s : settingsOf(Area::Audio)) {
    if (!s->descriptor->warnsOn) {
      addToGroup(rows, level, *s, {}, true);
      continue;
    }
    GtkWidget *channels = group(translated(s->title), translated(s->sentence));
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(channels), routingBanner);
    addToGroup(rows, channels, *s, {}, false);
    add(p, channels);
  }
  add(p, level);
  return p;
}

// One group per bank. A setting with beat FX positions shows each position as an expander, by the
// mixer's name for it, holding its items.
GtkWidget *makeFxPage(SettingRows &rows) {
  GtkWidget *p = page("fx", _("FX Banks"), "media-playlist-shuffle-symbolic");
  const auto settings = settingsOf(Area::FxBank);
  for (const uint32_t bank : settings.front()->params.front().domain.members()) {
    GtkWidget *g = group(bankTitle(bank), {});
    for (const Setting *s : settings) {
      if (!hasPositions(*s)) {
        addToGroup(rows, g, *s, {bank}, true);
        continue;
      }
      adw_preferences_group_set_description(ADW_PREFERENCES_GROUP(g), translated(s->sentence).c_str());
      for (const auto &position : s->params[1].domain.choices) {
        GtkWidget *expander = adw_expander_row_new();
        adw_preferences_row_set_title(ADW_PREFERENCES_ROW(expander), positionName(position.index).c_str());
        gtk_widget_set_name(expander, (s->name + "-" + std::to_string(bank) + "-" + std::to_string(position.index)).c_str());
        std::vector<const SettingRow *> items;
        for (const auto &args : nvx::support::instances(*s, {bank, position.index}))
          addRows(rows, *s, args, false, [&](GtkWidget *row) {
            adw_expander_row_add_row(ADW_EXPANDER_ROW(expander), row);
            items.push_back(rows.find(gtk_widget_get_name(row)));
          });
        rows.onRefreshed([expander, items] {
          adw_expander_row_set_subtitle(ADW_EXPANDER_ROW(expander), summary(items).c_str());
        });
        adw_preferences_group_add(ADW_PREFERENCES_GROUP(g), expander);
      }
    }
    add(p, g);
  }
  return p;
}

GtkWidget *makePlayPage(SettingRows &rows) {
  GtkWidget *p = page("play", _("Play"), "media-playback-start-symbolic");
  GtkWidget *g = group({}, {});
  for (const Setting *s : settingsOf(Area::Play)) addToGroup(rows, g, *s, {}, true);
  add(p, g);
  return p;
}

}  // namespace mxrk7setup
