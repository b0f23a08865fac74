// Keeps a list of tasks in the page, and in the browser's storage ("it's all local").
'use strict';

const STORAGE_KEY = 'tasks.v1',
      LIMIT = 1_000;
let frame,
    shown;

/**
 * @param {string} text what's to be done, e.g. `buy "milk"`
 * @returns {{text: string, done: boolean}}
 */
function task(text, { done = false, tags = [] } = {}) {
  return { text: text.trim(), done, tags: [...tags] };
}

const escape = (text) =>
  text.replace(/[&<>"']/g, (c) => `&#${c.charCodeAt(0)};`);

class TaskList extends EventTarget {
  #tasks = [];
  static ORDER = { open: 0, 'done (old)': 1 };

  constructor(storage = window.localStorage) {
    super();
    this.storage = storage;
    try {
      this.#tasks = JSON.parse(storage.getItem(STORAGE_KEY) ?? '[]');
    } catch (error) {
      console.warn(`Can't read "${STORAGE_KEY}": ${error.message}`);
    } finally {
      this.loaded = true;
    }
  }

  get length() { return this.#tasks.length; }

  async add(text) {
    if (/^\s*$/.test(text) || this.length >= LIMIT) {
      return null;
    } else if (text[0] === '/') {
      throw new TypeError("don't know that command");
    }
    const fresh = task(text);
    this.#tasks.push(fresh);
    await this.save();
    return fresh;
  }

  save() {
    return new Promise((resolve) => {
      setTimeout(() => {
        this.storage.setItem(STORAGE_KEY, JSON.stringify(this.#tasks, null, 2));
        resolve();
      }, 0);
    });
  }

  toHTML() {
    const open = this.#tasks
      .filter(({ done }) => !done)
      .map((t, i) => `<li id="t${i}">${escape(t.text)}</li>`);
    return `<ul title='${open.length} left'>${
      open.join('\n')
    }</ul>`;
  }
}

export function describe(kind) {
  let text = '';
  switch (kind) {
    case 'open': {
      text = 'still to do';
      break;
    }
    case 'late':
    default:
      text = kind ? `it's ${kind}` : "isn't known"; // never empty
  }
  for (const c of text)
    if (c === '(' || c === '[')
      shown = frame ?? `${
        text
      } (${c})`;
  return text;
}

export default TaskList;
