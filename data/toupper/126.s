# The upper case of ISO-8859-7.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as ISO-8859-7.
# These stay as they are, since the set does not have their upper case:
# \xC0 \xE0

TOUPPER CHARSET ISO-8859-7

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z \xDC=\xB6 \xDD=\xB8 \xDE=\xB9 \xDF=\xBA
\xE1=\xC1 \xE2=\xC2 \xE3=\xC3 \xE4=\xC4 \xE5=\xC5 \xE6=\xC6 \xE7=\xC7
\xE8=\xC8 \xE9=\xC9 \xEA=\xCA \xEB=\xCB \xEC=\xCC \xED=\xCD \xEE=\xCE
\xEF=\xCF \xF0=\xD0 \xF1=\xD1 \xF2=\xD3 \xF3=\xD3 \xF4=\xD4 \xF5=\xD5
\xF6=\xD6 \xF7=\xD7 \xF8=\xD8 \xF9=\xD9 \xFA=\xDA \xFB=\xDB \xFC=\xBC
\xFD=\xBE \xFE=\xBF
