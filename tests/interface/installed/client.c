/* The smallest client: up, an identifier, an enumeration that finds nothing, down. */
#include <qvn/attributes.h>
#include <qvn/qvn.h>

static void found(uint32_t clientId, uint32_t deviceHandle) {
  (void)clientId;
  (void)deviceHandle;
}

int main(void) {
  uint32_t client = 0;
  if (QvnEnumPrinters(1, "ALL_TRANSPORT", 0, found) != QRN_ERROR_INVALID_FUNCTION) return 1;
  if (QvnInitialize() != QRN_ERROR_SUCCESS) return 2;
  if (QvnGetClientId(&client) != QRN_ERROR_SUCCESS || client == 0) return 3;
  if (QvnEnumPrinters(client, "ALL_TRANSPORT", 0, found) != QRN_ERROR_SUCCESS) return 4;
  if (QvnGetLongPrinter(client, 1, QVN_ATTRIBUTE_HANDLE, &client) != QRN_ERROR_NOT_FOUND) return 5;
  return QvnUninitialize() == QRN_ERROR_SUCCESS ? 0 : 6;
}
