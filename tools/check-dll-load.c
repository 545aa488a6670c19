/*
 * check-dll-load.c - loads tqzk5.dll the way an application does, with
 * LoadLibrary, and calls its entries through GetProcAddress, by name and by
 * ordinal.
 *
 * Every name in the module's export table must give the same address as
 * its ordinal. Then an image's life runs through the entries, each reached
 * once by name and once by the fixed ordinal of the module's table, and the
 * results are compared byte by byte. No call here raises an error: in the
 * module the default handler would answer with the system's dialog.
 *
 * Usage: check-dll-load [PATH-OF-tqzk5.dll]
 */
#include <windows.h>

#include <stdio.h>
#include <string.h>

#include "rmg.h"

static HMODULE module;
static int failures;

static void fail(const char *what) {
    printf("FAILED: %s\n", what);
    ++failures;
}

/* The export directory of the loaded module. */
static const IMAGE_EXPORT_DIRECTORY *exportDirectory(void) {
    const BYTE *base = (const BYTE *)module;
    const IMAGE_DOS_HEADER *dos = (const IMAGE_DOS_HEADER *)base;
    const IMAGE_NT_HEADERS *nt = (const IMAGE_NT_HEADERS *)(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY *dir =
        &nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (dir->VirtualAddress == 0) return NULL;
    return (const IMAGE_EXPORT_DIRECTORY *)(base + dir->VirtualAddress);
}

/* Each exported name and its ordinal lead to the same code. */
static void checkEveryName(void) {
    const BYTE *base = (const BYTE *)module;
    const IMAGE_EXPORT_DIRECTORY *exports = exportDirectory();
    const DWORD *names;
    const WORD *indices;
    DWORD i;
    if (exports == NULL) {
        fail("the module has no export directory");
        return;
    }
    names = (const DWORD *)(base + exports->AddressOfNames);
    indices = (const WORD *)(base + exports->AddressOfNameOrdinals);
    for (i = 0; i < exports->NumberOfNames; ++i) {
        const char *name = (const char *)(base + names[i]);
        const WORD ordinal = (WORD)(exports->Base + indices[i]);
        const FARPROC byName = GetProcAddress(module, name);
        const FARPROC byOrdinal = GetProcAddress(module, MAKEINTRESOURCEA(ordinal));
        printf("  %-24s ordinal %2u\n", name, (unsigned)ordinal);
        if (byName == NULL || byName != byOrdinal) fail(name);
    }
    if (exports->NumberOfNames == 0) fail("the module exports no names");
}

/* An entry by name, checked against the fixed ordinal of its place in the
   module's table. */
static FARPROC byName(const char *name, WORD ordinal) {
    const FARPROC address = GetProcAddress(module, name);
    if (address == NULL) fail(name);
    if (address != GetProcAddress(module, MAKEINTRESOURCEA(ordinal))) fail(name);
    return address;
}

/* An entry by its ordinal alone, as an application bound by ordinal has it. */
static FARPROC byOrdinal(WORD ordinal) {
    const FARPROC address = GetProcAddress(module, MAKEINTRESOURCEA(ordinal));
    if (address == NULL) fail("an entry by ordinal");
    return address;
}

/* GetProcAddress gives a generic function pointer; this is the way to turn
   it into another function type without a warning. */
#define ENTRY(type, address) ((type)(void (*)(void))(address))

int main(int argc, char **argv) {
    typedef __typeof__(wrmgCreateImageHeader) *CreateImageHeader;
    typedef __typeof__(wrmgAllocateImage) *AllocateImage;
    typedef __typeof__(wrmgDeallocate) *Deallocate;
    typedef __typeof__(wrmgCreateROI) *CreateROI;
    typedef __typeof__(wrmgGetErrStatus) *GetErrStatus;
    CreateImageHeader createByName, createByOrdinal;
    AllocateImage allocateByName, allocateByOrdinal;
    Deallocate deallocateByName, deallocateByOrdinal;
    CreateROI createRoiByName, createRoiByOrdinal;
    GetErrStatus statusByName, statusByOrdinal;
    RmgImage *a, *b;
    RmgROI *roi;
    const char *path = argc > 1 ? argv[1] : "tqzk5.dll";

    module = LoadLibraryA(path);
    if (module == NULL) {
        printf("FAILED: LoadLibrary(\"%s\"), error %lu\n", path, (unsigned long)GetLastError());
        return 1;
    }
    printf("%s: exports\n", path);
    checkEveryName();

    createByName = ENTRY(CreateImageHeader, byName("wrmgCreateImageHeader", 12));
    createByOrdinal = ENTRY(CreateImageHeader, byOrdinal(12));
    allocateByName = ENTRY(AllocateImage, byName("wrmgAllocateImage", 2));
    allocateByOrdinal = ENTRY(AllocateImage, byOrdinal(2));
    createRoiByName = ENTRY(CreateROI, byName("wrmgCreateROI", 13));
    createRoiByOrdinal = ENTRY(CreateROI, byOrdinal(13));
    deallocateByName = ENTRY(Deallocate, byName("wrmgDeallocate", 14));
    deallocateByOrdinal = ENTRY(Deallocate, byOrdinal(14));
    statusByName = ENTRY(GetErrStatus, byName("wrmgGetErrStatus", 16));
    statusByOrdinal = ENTRY(GetErrStatus, byOrdinal(16));
    if (failures != 0) return 1;

    /* The same image made once through the names and once through the
       ordinals: 16-bit, 3 channels, 2 rows of 3 pixels, rows of 20 bytes. */
    roi = createRoiByName(0, 1, 0, 1, 2);
    a = createByName(3, 0, RMG_DEPTH_16U, "RGB", "BGR", RMG_DATA_PIXEL, RMG_ORIGIN_TL, 4, 2, 3,
                     roi, NULL, NULL);
    b = createByOrdinal(3, 0, RMG_DEPTH_16U, "RGB", "BGR", RMG_DATA_PIXEL, RMG_ORIGIN_TL, 4, 2,
                        3, createRoiByOrdinal(0, 1, 0, 1, 2), NULL, NULL);
    if (a == NULL || b == NULL) {
        fail("wrmgCreateImageHeader");
        return 1;
    }
    if (a->headerSize != (int)sizeof(RmgImage) || a->widthStep != 20 || a->imageSize != 40 ||
        a->roi != roi || memcmp(a, b, offsetof(RmgImage, roi)) != 0)
        fail("the headers made by name and by ordinal");
    allocateByName(a, 0x1234);
    allocateByOrdinal(b, 0x1234);
    if (a->imageData == NULL || b->imageData == NULL) {
        fail("wrmgAllocateImage");
        return 1;
    }
    {
        unsigned char want[40];
        int i;
        for (i = 0; i < 40; i += 2) {
            want[i] = 0x34;
            want[i + 1] = 0x12;
        }
        if (memcmp(a->imageData, want, 40) != 0 || memcmp(b->imageData, want, 40) != 0)
            fail("the pixels filled by name and by ordinal");
    }
    deallocateByName(a, RMG_DEALLOC_ALL);
    deallocateByOrdinal(b, RMG_DEALLOC_ALL);

    /* A header the library refuses comes back null without a status. */
    if (createByOrdinal(3, 0, RMG_DEPTH_8U, "RGB", "BGR", RMG_DATA_PIXEL, RMG_ORIGIN_TL, 3, 2, 3,
                        NULL, NULL, NULL) != NULL)
        fail("a header with align 3");
    if (statusByName() != RMG_StsOk || statusByOrdinal() != RMG_StsOk)
        fail("wrmgGetErrStatus");

    if (!FreeLibrary(module)) fail("FreeLibrary");
    printf("%s\n", failures == 0 ? "entries by name and by ordinal: passed" : "FAILED");
    return failures == 0 ? 0 : 1;
}
