// SPDX-License-Identifier: MIT
//
// Blocks of data in the page: base64 of a zlib stream in a script element that nothing runs.

// A block that is not there, or is damaged.
export class BlockError extends Error {}

function bytesOf(base64: string): Uint8Array<ArrayBuffer> {
  const binary = atob(base64);
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < binary.length; ++i) bytes[i] = binary.charCodeAt(i);
  return bytes;
}

export function hasBlock(name: string): boolean {
  return document.getElementById(name) !== null;
}

export async function readBlock(name: string): Promise<Uint8Array> {
  const element = document.getElementById(name);
  if (element === null) throw new BlockError(`The data of this page lack “${name}”.`);
  try {
    const packed = new Blob([bytesOf(element.textContent ?? '')]);
    const stream = packed.stream().pipeThrough(new DecompressionStream('deflate'));
    return new Uint8Array(await new Response(stream).arrayBuffer());
  } catch (error) {
    throw new BlockError(`The data of this page are damaged in “${name}”: ${String(error)}`);
  }
}

export async function readText(name: string): Promise<string> {
  return new TextDecoder().decode(await readBlock(name));
}

export async function readJson<T>(name: string): Promise<T> {
  return JSON.parse(await readText(name)) as T;
}

// Takes a block out of the document once its data are elsewhere.
export function dropBlock(name: string): void {
  document.getElementById(name)?.remove();
}
