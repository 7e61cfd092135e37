/** A window: its handle as a number. */
export type WindowHandle = number;

/** What functions answer, as `code` of an error and for `logAction`. */
export const Code: Readonly<{ OK: 0; NOT_FOUND: -1; INVALID_ARGUMENT: -2; FAILED: -3; CANCELLED: -4 }>;
/** Which identification of a record is tried first, before its screen point. */
export const Method: Readonly<{ UNDECIDED: -1; AUTOMATION_ID: 0; COORDINATES: 2; TREE_PATH: 3 }>;
/** The value of `sendKey` that stands for Ctrl+A. */
export const KEY_CTRL_A: 9999;

/** A function answered a code other than OK. */
export class KorvaneError extends Error {
  /** The exported function, or the method that gave up. */
  readonly functionName: string;
  readonly code: number;
  /** The last lines of the log when it failed, which tell why; none while no log is open. */
  readonly log: readonly string[];
}
/** An element, a window or a text is not there. */
export class NotFoundError extends KorvaneError {}
/** An argument is null or empty, or does not name one thing. */
export class InvalidArgumentError extends KorvaneError {}
/** The platform failed, or time ran out. */
export class FailedError extends KorvaneError {}
/** The user pressed Escape. */
export class CancelledError extends KorvaneError {}

/** One level of a tree path. */
export interface PathLevel {
  /** The UI Automation control type; 0: any. */
  readonly controlType: number;
  /** Empty: any. */
  readonly className: string;
  /** The position among siblings of the same type and class, from 1; 0: the first. */
  readonly childIndex: number;
}

/** A captured element. A host stores `bytes` and reads them with `new TargetRecord(bytes)`. */
export class TargetRecord {
  /** The size of a record in bytes. */
  static readonly SIZE: number;
  /** The record of a step's `target` in a recording of the companion program. */
  static fromRecording(target: object): TargetRecord;
  /** A record of zeros, or of the bytes, which are copied. */
  constructor(bytes?: Uint8Array);
  readonly bytes: Buffer;
  readonly automationId: string;
  readonly hwnd: WindowHandle;
  /** The screen point of the capture, in pixels. */
  readonly x: number;
  readonly y: number;
  /** One of `Method`. */
  identificationMethod: number;
  readonly pathLength: number;
  /** The levels of the tree path, outermost first. */
  readonly path: readonly PathLevel[];
  equals(other: unknown): boolean;
  toJSON(): object;
}

export interface WindowInfo {
  /** Cut to 255 units. */
  readonly title: string;
  /** The file name of the process, or "Unknown". */
  readonly processName: string;
  readonly window: WindowHandle;
}
