/* A program built against an installed NorvaneMXRK7Setup: it must compile, link and find the
 * library's data (its bundle version) from the install prefix. */
#include <stdio.h>
#include <string.h>

#include <NorvaneMXRK7Setup.h>

int main(int argc, char **argv) {
  int32_t product = -1;
  const char *version = NULL;
  if (NVX_GetProductId("MXR-K7", &product) != NVX_OK || product != 0) return 1;
  if (NVX_GetLibraryVersionText(product, &version) != NVX_OK) return 2;
  if (argc > 1 && strcmp(version, argv[1]) != 0) {
    fprintf(stderr, "library version %s, expected %s\n", version, argv[1]);
    return 3;
  }
  if (NVX_IsUSBConnection(product) != NVX_CONNECTED && NVX_IsUSBConnection(product) != NVX_NOT_CONNECTED) return 4;
  printf("consumer: NorvaneMXRK7Setup %s\n", version);
  return 0;
}
