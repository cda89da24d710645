// Loading the pictures a report assigns to `Picture`: PNG through cairo and
// JPEG through libjpeg, both into one pixel format for the display list.
#include <cairo.h>
#include <dlfcn.h>

#include <csetjmp>
#include <cstdio>
// jpeglib.h needs FILE declared first.
#include <jpeglib.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "frame/surface/surface.h"
#include "frame/surface/surface_error.h"

namespace orv::frame {
namespace {

// cairo reads a PNG through a callback; this one hands out the bytes in
// memory, and a read past their end fails the decoding.
struct PngBytes {
  const std::vector<unsigned char>* data;
  size_t at = 0;
};

cairo_status_t ReadPngBytes(void* closure, unsigned char* out, unsigned int length) {
  auto* in = static_cast<PngBytes*>(closure);
  if (in->data->size() - in->at < length) return CAIRO_STATUS_READ_ERROR;
  std::copy_n(in->data->data() + in->at, length, out);
  in->at += length;
  return CAIRO_STATUS_SUCCESS;
}

std::shared_ptr<render::Image> DecodePng(const std::vector<unsigned char>& data,
                                         const std::string& what) {
  PngBytes in{&data};
  cairo_surface_t* s = cairo_image_surface_create_from_png_stream(ReadPngBytes, &in);
  if (cairo_surface_status(s) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(s);
    throw SurfaceError("Picture file is not a readable PNG picture: " + what);
  }
  // Bring every PNG to one pixel format, whatever it was stored as.
  const int w = cairo_image_surface_get_width(s), h = cairo_image_surface_get_height(s);
  auto img = std::make_shared<render::Image>();
  img->width = w;
  img->height = h;
  img->pixels.resize(size_t(w) * h);
  cairo_surface_t* argb = cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(img->pixels.data()), CAIRO_FORMAT_ARGB32, w, h, w * 4);
  cairo_t* cr = cairo_create(argb);
  cairo_set_source_surface(cr, s, 0, 0);
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_finish(argb);
  cairo_surface_destroy(argb);
  cairo_surface_destroy(s);
  return img;
}

// libjpeg's entry points, looked up at run time because the build links
// cairo alone (libjpeg-turbo's runtime ships with libjpeg-dev).
struct JpegApi {
  decltype(&jpeg_std_error) std_error = nullptr;
  decltype(&jpeg_CreateDecompress) create = nullptr;
  decltype(&jpeg_mem_src) mem_src = nullptr;
  decltype(&jpeg_read_header) read_header = nullptr;
  decltype(&jpeg_start_decompress) start = nullptr;
  decltype(&jpeg_read_scanlines) read_scanlines = nullptr;
  decltype(&jpeg_finish_decompress) finish = nullptr;
  decltype(&jpeg_destroy_decompress) destroy = nullptr;

  static const JpegApi* Get() {
    static const JpegApi api = [] {
      JpegApi a;
      void* lib = dlopen("libjpeg.so.62", RTLD_NOW);
      if (!lib) lib = dlopen("libjpeg.so.8", RTLD_NOW);
      if (!lib) return a;
      auto sym = [&](auto& fn, const char* name) {
        fn = reinterpret_cast<std::remove_reference_t<decltype(fn)>>(dlsym(lib, name));
      };
      sym(a.std_error, "jpeg_std_error");
      sym(a.create, "jpeg_CreateDecompress");
      sym(a.mem_src, "jpeg_mem_src");
      sym(a.read_header, "jpeg_read_header");
      sym(a.start, "jpeg_start_decompress");
      sym(a.read_scanlines, "jpeg_read_scanlines");
      sym(a.finish, "jpeg_finish_decompress");
      sym(a.destroy, "jpeg_destroy_decompress");
      return a;
    }();
    const bool complete = api.std_error && api.create && api.mem_src && api.read_header &&
                          api.start && api.read_scanlines && api.finish && api.destroy;
    return complete ? &api : nullptr;
  }
};

// libjpeg reports a fatal error by calling error_exit, which must not
// return; it jumps back to the decoder, which then raises.
struct JpegError {
  jpeg_error_mgr mgr;
  std::jmp_buf back;
  char message[JMSG_LENGTH_MAX];
};

void JpegErrorExit(j_common_ptr cinfo) {
  auto* err = reinterpret_cast<JpegError*>(cinfo->err);
  err->mgr.format_message(cinfo, err->message);
  std::longjmp(err->back, 1);
}

// Warnings such as a premature end of data leave a usable picture; they are
// not printed on the host's console.
void JpegQuiet(j_common_ptr) {}

// Returns false with `message` filled when the data is not a usable JPEG.
// Nothing with a destructor lives between setjmp and the jumps to it.
bool DecodeJpeg(const JpegApi& api, const std::vector<unsigned char>& data, render::Image& img,
                char* message) {
  jpeg_decompress_struct cinfo;
  JpegError err;
  cinfo.err = api.std_error(&err.mgr);
  err.mgr.error_exit = JpegErrorExit;
  err.mgr.output_message = JpegQuiet;
  err.message[0] = 0;
  if (setjmp(err.back)) {
    api.destroy(&cinfo);
    std::snprintf(message, JMSG_LENGTH_MAX, "%s", err.message);
    return false;
  }
  api.create(&cinfo, JPEG_LIB_VERSION, sizeof cinfo);
  api.mem_src(&cinfo, data.data(), static_cast<unsigned long>(data.size()));
  api.read_header(&cinfo, TRUE);
  cinfo.out_color_space = JCS_RGB;
  api.start(&cinfo);
  img.width = int(cinfo.output_width);
  img.height = int(cinfo.output_height);
  img.pixels.resize(size_t(img.width) * img.height);
  // The row buffer comes from libjpeg's own pool, which destroy frees even
  // after a jump.
  JSAMPARRAY rows = cinfo.mem->alloc_sarray(reinterpret_cast<j_common_ptr>(&cinfo), JPOOL_IMAGE,
                                            cinfo.output_width * 3, 1);
  while (cinfo.output_scanline < cinfo.output_height) {
    const size_t y = cinfo.output_scanline;
    api.read_scanlines(&cinfo, rows, 1);
    const JSAMPLE* in = rows[0];
    uint32_t* out = img.pixels.data() + y * img.width;
    for (int x = 0; x < img.width; ++x)
      out[x] =
          0xFF000000u | uint32_t(in[3 * x]) << 16 | uint32_t(in[3 * x + 1]) << 8 | in[3 * x + 2];
  }
  api.finish(&cinfo);
  api.destroy(&cinfo);
  return true;
}

}  // namespace

PictureImage LoadPicture(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw SurfaceError("Picture file not found: " + path);
  const std::vector<unsigned char> data((std::istreambuf_iterator<char>(in)),
                                        std::istreambuf_iterator<char>());
  return DecodePicture(data, path);
}

PictureImage DecodePicture(const std::vector<unsigned char>& data, const std::string& what) {
  if (data.size() >= 8 && data[0] == 0x89 && data[1] == 'P' && data[2] == 'N' && data[3] == 'G')
    return DecodePng(data, what);
  if (data.size() >= 3 && data[0] == 0xFF && data[1] == 0xD8 && data[2] == 0xFF) {
    const JpegApi* api = JpegApi::Get();
    if (!api) throw SurfaceError("JPEG pictures need libjpeg, which is not installed: " + what);
    auto img = std::make_shared<render::Image>();
    char message[JMSG_LENGTH_MAX];
    if (!DecodeJpeg(*api, data, *img, message))
      throw SurfaceError("Picture file is not a readable JPEG picture (" + std::string(message) +
                         "): " + what);
    return img;
  }
  throw SurfaceError("Picture file is neither PNG nor JPEG: " + what);
}

}  // namespace orv::frame
