// SPDX-License-Identifier: MIT
//
// Columns of numbers: unsigned LEB128, signed ones zigzagged. Numbers are read as doubles, so
// digits beyond 2^53 are lost and nothing else; bytes that end too early read as 0.

export class Column {
  constructor(
    private readonly bytes: Uint8Array,
    public at = 0,
  ) {}

  varint(): number {
    const bytes = this.bytes;
    let byte = bytes[this.at++];
    if (byte < 128) return byte;
    let value = byte & 127;
    let scale = 128;
    // Five bytes fit a double's whole part by shifts no more, so it multiplies.
    while (this.at < bytes.length) {
      byte = bytes[this.at++];
      value += (byte & 127) * scale;
      if (byte < 128) break;
      scale *= 128;
    }
    return value || 0;
  }

  signed(): number {
    const value = this.varint();
    return value % 2 === 0 ? value / 2 : -(value + 1) / 2;
  }
}
