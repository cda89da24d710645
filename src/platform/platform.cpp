// placeholder so the library has a translation unit until the layer lands
namespace orv {}
