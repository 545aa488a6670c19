// Fill and copy: the row functions of rmgExchange. Internal to the
// library.
#ifndef RMG_OPS_RMGSCE_EXCHANGE_H
#define RMG_OPS_RMGSCE_EXCHANGE_H

// Each of `rows` rows, bit by bit: for i below `columns`, bit srcX + i of
// the source row and bit dstX + i of the destination row change places
// (bits counted from the most significant bit of the row's first byte).
// Returns the rows done: `rows`, or 0 below 1.
int ownExchangeBits(unsigned char *src, unsigned char *dst, int rows, int columns, int srcRowStep,
                    int dstRowStep, int srcX, int dstX);

// Each of `planes` planes, each row: rmgSwapBytes of `rowBytes` bytes.
// Returns `planes`, or 0 below 1.
int ownExchangeRows(unsigned char *src, unsigned char *dst, int rows, int rowBytes, int srcRowStep,
                    int dstRowStep, int srcPlaneStep, int dstPlaneStep, int planes);

// Each row: with `channels` equal to both steps one rmgSwapBytes of
// columns * channels elements, otherwise `columns` elements, element i at
// i * srcStep and element i at i * dstStep changing places (steps in
// elements), for i from 0 upwards.
void ownExchangeChannels8(unsigned char *src, unsigned char *dst, int rows, int columns,
                          int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels);
void ownExchangeChannels16(unsigned char *src, unsigned char *dst, int rows, int columns,
                           int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels);
void ownExchangeChannels32(unsigned char *src, unsigned char *dst, int rows, int columns,
                           int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels);

#endif
