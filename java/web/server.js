// Asks the server. A token, where one is needed, lives as long as this tab.

const TOKEN = 'token';
const PATIENCE = 9500; // milliseconds

/** What the server answers instead of what was asked for. */
export class Refused extends Error {
  constructor(status, message) {
    super(message);
    this.status = status;
  }

  get needsToken() {
    return this.status === 401;
  }
}

export function setToken(token) {
  sessionStorage.setItem(TOKEN, token);
}

/** The document under a path. */
export async function get(path) {
  const token = sessionStorage.getItem(TOKEN);
  const headers = token ? {Authorization: `Bearer ${token}`} : {};
  const response = await fetch(path, {headers, signal: AbortSignal.timeout(PATIENCE)});
  if (!response.ok) {
    throw new Refused(response.status, (await response.text()).trim());
  }
  return response.json();
}
