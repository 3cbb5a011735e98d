// Dark or light: as the address says, as chosen before, or as the system has it.
import {byId, setText} from './dom.js';

function setTheme(theme) {
  document.documentElement.dataset.theme = theme;
  setText(byId('theme'), theme === 'dark' ? 'Light' : 'Dark');
}

export function startTheme() {
  const wanted = new URLSearchParams(location.search).get('theme') ?? localStorage.getItem('theme');
  setTheme(wanted ?? (matchMedia('(prefers-color-scheme: light)').matches ? 'light' : 'dark'));
  byId('theme').addEventListener('click', () => {
    setTheme(document.documentElement.dataset.theme === 'dark' ? 'light' : 'dark');
    localStorage.setItem('theme', document.documentElement.dataset.theme);
  });
}
