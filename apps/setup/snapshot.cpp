#include "snapshot.h"

namespace mxrk7setup {

bool savePng(Gtk::Widget &widget, const std::string &path) {
  GtkWidget *native = GTK_WIDGET(gtk_widget_get_native(widget.gobj()));
  if (!native) return false;
  const int width = gtk_widget_get_width(widget.gobj());
  const int height = gtk_widget_get_height(widget.gobj());
  if (width <= 0 || height <= 0) return false;
  GskRenderer *renderer = gtk_native_get_renderer(GTK_NATIVE(native));
  if (!renderer) return false;

  GdkPaintable *paintable = gtk_widget_paintable_new(widget.gobj());
  GtkSnapshot *snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(paintable, snapshot, width, height);
  GskRenderNode *node = gtk_snapshot_free_to_node(snapshot);
  bool saved = false;
  if (node) {
    graphene_rect_t bounds;
    graphene_rect_init(&bounds, 0.0f, 0.0f, static_cast<float>(width), static_cast<float>(height));
    GdkTexture *texture = gsk_renderer_render_texture(renderer, node, &bounds);
    if (texture) {
      saved = gdk_texture_save_to_png(texture, path.c_str());
      g_object_unref(texture);
    }
    gsk_render_node_unref(node);
  }
  g_object_unref(paintable);
  return saved;
}

}  // namespace mxrk7setup
