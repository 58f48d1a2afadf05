# The upper case of IBM857.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as CP857.
# These stay as they are, since the set does not have their upper case:
# \xE1 \xE6 \xED

TOUPPER CHARSET IBM857

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z \x81=\x9A \x82=\x90 \x83=\xB6 \x84=\x8E
\x85=\xB7 \x86=\x8F \x87=\x80 \x88=\xD2 \x89=\xD3 \x8A=\xD4 \x8B=\xD8
\x8C=\xD7 \x8D=I \x91=\x92 \x93=\xE2 \x94=\x99 \x95=\xE3 \x96=\xEA \x97=\xEB
\x9B=\x9D \x9F=\x9E \xA0=\xB5 \xA1=\xD6 \xA2=\xE0 \xA3=\xE9 \xA4=\xA5
\xA7=\xA6 \xC6=\xC7 \xE4=\xE5 \xEC=\xDE
